#!/usr/bin/env python3
"""Sets the features that `zel features` finds in published runs beside what is known of these runs.

1. Identified ions (spectrum matches, or features of identified peptides): of those with MS1 signal, how many lie inside a
   feature of their charge and mass (10 ppm). An ion has MS1 signal when its first three isotopes (two for charge 1 and 2
   below 1200 Da) stand in at least five consecutive MS1 scans within half a minute of its identification.
2. Agreement both ways with the features of two programs of OpenMS 2.6 (Debian package topp): same charge, masses within
   10 ppm, the apex of one inside the limits of the other or 5 s beside them. Features below 500 Da, which zel features
   does not report by default, are left out. Features that no program of OpenMS shares
   are described by what they are like: how strong, and how many of their masses are those of peptides, which lie close to
   1.000495 Da times a whole number. 30 % would by chance.

usage: real_features.py ZEL DATA_FOLDER [--work DIR] [--details] [--with "OPTIONS of zel features"]
"""
import argparse
import csv
import gzip
import os
import shlex
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

PROTON = 1.00727646677
ISOTOPE_STEP = 1.003355
LEAST_MASS = 500.0  # Da, of the settings of zel features
PEPTIDE_STEP = 1.000495  # Da, mass of a nucleon in a peptide
BAND = 0.15  # of a step, to each side
GREATEST_BAND_MASS = 2500.0  # Da; the masses of heavier peptides scatter too far
PPM = 10.0
MARGIN_MINUTES = 5.0 / 60.0
SIGNAL_SCANS = 5

IDENTIFIED = [
    ("lcms/velos_yeast.mzML", "lcms/velos_yeast_psms.tsv"),
    ("lcms/fusion_ms1_long.mzML", "lcms/fusion_ms1_long.idXML"),
    ("multi/qe_runs_1.mzML", "multi/qe_runs_1.featureXML"),
    ("multi/qe_runs_2.mzML", "multi/qe_runs_2.featureXML"),
    ("multi/qe_runs_3.mzML", "multi/qe_runs_3.featureXML"),
]
COMPARED = ["multi/qe_runs_1.mzML", "multi/orbi_gradient_low_1.mzML", "lcms/velos_yeast.mzML",
            "lcms/fusion_ms1_long.mzML", "lcms/orbi_gliadin.mzML", "profile/qe_silac_profile.mzML"]
PEERS = {
    "FeatureFinderCentroided": ["-algorithm:mass_trace:mz_tolerance", "0.008", "-algorithm:mass_trace:min_spectra", "5",
                                "-algorithm:isotopic_pattern:mz_tolerance", "0.008",
                                "-algorithm:isotopic_pattern:charge_high", "6"],
    "FeatureFinderMultiplex": ["-algorithm:labels", "", "-algorithm:charge", "1:6", "-algorithm:mz_tolerance", "10"],
}


def unpacked(data, work, name):
    """The path of a file of the data folder, uncompressed."""
    target = os.path.join(work, os.path.basename(name))
    source = os.path.join(data, name)
    if os.path.exists(source):
        return source
    if not os.path.exists(target) and os.path.exists(source + ".gz"):
        with gzip.open(source + ".gz", "rb") as packed, open(target, "wb") as plain:
            shutil.copyfileobj(packed, plain)
    return target if os.path.exists(target) else None


def read_table(path):
    with open(path) as stream:
        return list(csv.DictReader(stream, delimiter="\t"))


def identified_ions(path):
    """(neutral mass, charge, minutes) of each identified ion, once."""
    ions = set()
    if path.endswith(".tsv"):
        for row in read_table(path):
            if row["Target/Decoy"] == "T" and float(row["Q-Value"]) <= 0.01:
                ions.add((float(row["Peptide Monoisotopic Mass"]), int(row["Precursor Charge"]),
                          float(row["Scan Retention Time"])))
    elif path.endswith(".idXML"):
        for element in ElementTree.parse(path).iter("PeptideIdentification"):
            hits = element.findall("PeptideHit")
            if hits:
                charge = int(hits[0].get("charge"))
                mz = float(element.get("MZ"))
                ions.add(((mz - PROTON) * charge, charge, float(element.get("RT")) / 60.0))
    else:
        for element in ElementTree.parse(path).iter("feature"):
            if element.find(".//PeptideHit") is not None and element.find("position") is not None:
                seconds, mz = (float(position.text) for position in element.findall("position"))
                charge = int(element.find("charge").text)
                ions.add(((mz - PROTON) * charge, charge, seconds / 60.0))
    return sorted(ions)


def with_signal(zel, run, ions, work):
    """The ions whose isotopes stand in enough consecutive scans."""
    windows = os.path.join(work, "windows.tsv")
    output = os.path.join(work, "xics.tsv")
    with open(windows, "w") as stream:
        stream.write("name\tmz\tppm\trt_start\trt_end\n")
        for i, (mass, charge, minutes) in enumerate(ions):
            for k in range(3):
                mz = (mass + k * ISOTOPE_STEP) / charge + PROTON
                stream.write("%d.%d\t%.6f\t%g\t%.4f\t%.4f\n"
                             % (i, k, mz, PPM, max(0.0, minutes - 0.5), minutes + 0.5))
    subprocess.run([zel, "xic", run, "--windows", windows, "-o", output], check=True, stderr=subprocess.DEVNULL)
    longest = {}
    length = {}
    for row in read_table(output):
        name = row["name"]
        length[name] = length.get(name, 0) + 1 if float(row["intensity"]) > 0.0 else 0
        longest[name] = max(longest.get(name, 0), length[name])
    kept = []
    for i, (mass, charge, minutes) in enumerate(ions):
        needed = 2 if mass < 1200.0 and charge < 3 else 3
        if all(longest.get("%d.%d" % (i, k), 0) >= SIGNAL_SCANS for k in range(needed)):
            kept.append((mass, charge, minutes))
    return kept


def our_features(zel, run, work, options):
    command = [zel, "features", run, "-o", work, "--tsv"] + options
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    base = os.path.splitext(os.path.basename(run))[0]
    return [{"mass": float(row["mono_mass"]), "charge": int(row["charge"]), "start": float(row["rt_start"]),
             "apex": float(row["rt_apex"]), "end": float(row["rt_end"]), "intensity": float(row["intensity"])}
            for row in read_table(os.path.join(work, base + ".features.tsv"))]


def peer_features(peer, run, work):
    output = os.path.join(work, os.path.basename(run) + "." + peer + ".featureXML")
    command = [peer, "-in", run, "-out", output] + PEERS[peer]
    tool = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if tool.returncode != 0:
        return None
    features = []
    for element in ElementTree.parse(output).iter("feature"):
        seconds, mz = (float(position.text) for position in element.findall("position"))
        charge = int(element.find("charge").text)
        times = [float(point.get("x")) for point in element.iter("pt")] or [seconds]
        features.append({"mass": (mz - PROTON) * charge, "charge": charge, "apex": seconds / 60.0,
                         "start": min(times) / 60.0, "end": max(times) / 60.0,
                         "intensity": float(element.find("intensity").text)})
    return [feature for feature in features if feature["mass"] >= LEAST_MASS]


def is_same(a, b):
    return (a["charge"] == b["charge"] and abs(a["mass"] - b["mass"]) <= PPM * 1e-6 * a["mass"]
            and (b["start"] - MARGIN_MINUTES <= a["apex"] <= b["end"] + MARGIN_MINUTES
                 or a["start"] - MARGIN_MINUTES <= b["apex"] <= a["end"] + MARGIN_MINUTES))


def relation(a, others):
    """What others have where this feature is."""
    if any(is_same(a, b) for b in others):
        return "same"
    near = [b for b in others if b["start"] - MARGIN_MINUTES <= a["apex"] <= b["end"] + MARGIN_MINUTES]
    for b in near:
        for steps in range(-4, 5):
            if steps and is_same(dict(a, mass=a["mass"] + steps * ISOTOPE_STEP), b):
                return "isotope step apart"
    mz = a["mass"] / a["charge"] + PROTON
    for b in near:
        for k in range(5):
            for j in range(5):
                other = (b["mass"] + j * ISOTOPE_STEP) / b["charge"] + PROTON
                if abs(mz + k * ISOTOPE_STEP / a["charge"] - other) <= PPM * 1e-6 * mz:
                    return "shares a peak"
    return "nothing"


def count_relations(ours, theirs):
    counts = {}
    for a in ours:
        kind = relation(a, theirs)
        counts[kind] = counts.get(kind, 0) + 1
    return counts


def band_share(features):
    """Percent of the lighter features with the mass of a peptide."""
    steps = [f["mass"] / PEPTIDE_STEP for f in features if f["mass"] <= GREATEST_BAND_MASS]
    return percent(sum(abs(step - round(step)) < BAND for step in steps), len(steps))


def median_intensity(features):
    return "%.3g" % sorted(f["intensity"] for f in features)[len(features) // 2] if features else "-"


def touching_pieces(features):
    """How many features go on where another one of the same ion ends."""
    ordered = sorted(features, key=lambda f: (f["charge"], f["mass"]))
    count = 0
    for i, a in enumerate(ordered):
        for b in ordered[i + 1:]:
            if b["charge"] != a["charge"] or b["mass"] - a["mass"] > PPM * 1e-6 * a["mass"]:
                break
            if b["start"] - MARGIN_MINUTES <= a["end"] and a["start"] - MARGIN_MINUTES <= b["end"]:
                count += 1
                break
    return count


def tell_own(ours, all_theirs):
    """What the features are like that a peer has and has not."""
    shared = [a for a in ours if any(is_same(a, b) for b in all_theirs)]
    alone = [a for a in ours if relation(a, all_theirs) == "nothing"]
    print("  shared by a peer: %d, median intensity %s, %s %% of peptide mass; found alone: %d, %s, %s %%; "
          "pieces of an ion: %d" % (len(shared), median_intensity(shared), band_share(shared), len(alone),
                                    median_intensity(alone), band_share(alone), touching_pieces(ours)))


def percent(part, whole):
    return "%.1f" % (100.0 * part / whole) if whole else "-"


def tell_identified(zel, data, work, options, details):
    print("run\tidentified ions\twith MS1 signal\tinside a feature\t%")
    total = [0, 0]
    for run_name, ids_name in IDENTIFIED:
        run, ids = unpacked(data, work, run_name), unpacked(data, work, ids_name)
        if run is None or ids is None:
            print("%s\tnot there, skipped" % run_name)
            continue
        ions = identified_ions(ids)
        wanted = with_signal(zel, run, ions, work)
        features = our_features(zel, run, work, options)
        missed = []
        for mass, charge, minutes in wanted:
            if not any(f["charge"] == charge and abs(f["mass"] - mass) <= PPM * 1e-6 * mass
                       and f["start"] - MARGIN_MINUTES <= minutes <= f["end"] + MARGIN_MINUTES for f in features):
                missed.append((mass, charge, minutes))
        found = len(wanted) - len(missed)
        total[0] += len(wanted)
        total[1] += found
        print("%s\t%d\t%d\t%d\t%s" % (run_name, len(ions), len(wanted), found, percent(found, len(wanted))), flush=True)
        for mass, charge, minutes in missed if details else []:
            ion = {"mass": mass, "charge": charge, "apex": minutes, "start": minutes, "end": minutes}
            print("  missed: mass %.4f charge %d at %.2f min: %s" % (mass, charge, minutes, relation(ion, features)))
    print("all\t\t%d\t%d\t%s\t(goal 90 %%)" % (total[0], total[1], percent(total[1], total[0])))


def tell_agreement(zel, data, work, options, details):
    print("run\tours\tpeer\ttheirs\ttheirs in ours %\tours in theirs %")
    for run_name in COMPARED:
        run = unpacked(data, work, run_name)
        if run is None:
            print("%s\tnot there, skipped" % run_name)
            continue
        ours = our_features(zel, run, work, options)
        all_theirs = []
        for peer in PEERS:
            if shutil.which(peer) is None:
                print("%s\t%d\t%s is not installed" % (run_name, len(ours), peer))
                continue
            theirs = peer_features(peer, run, work)
            if theirs is None:
                print("%s\t%d\t%s fails" % (run_name, len(ours), peer))
                continue
            all_theirs += theirs
            there = count_relations(theirs, ours)
            here = count_relations(ours, theirs)
            print("%s\t%d\t%s\t%d\t%s\t%s" % (run_name, len(ours), peer, len(theirs),
                                              percent(there.get("same", 0), len(theirs)),
                                              percent(here.get("same", 0), len(ours))), flush=True)
            if details:
                print("  theirs in ours: %s" % there)
                print("  ours in theirs: %s" % here)
        if all_theirs:
            tell_own(ours, all_theirs)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("zel")
    parser.add_argument("data")
    parser.add_argument("--work", help="folder for unpacked runs and results, kept; one that is removed if not given")
    parser.add_argument("--details", action="store_true", help="say what is wrong")
    parser.add_argument("--with", dest="options", default="", type=shlex.split, help="options of zel features")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as temporary:
        work = arguments.work or temporary
        os.makedirs(work, exist_ok=True)
        tell_identified(arguments.zel, arguments.data, work, arguments.options, arguments.details)
        tell_agreement(arguments.zel, arguments.data, work, arguments.options, arguments.details)


if __name__ == "__main__":
    sys.exit(main())
