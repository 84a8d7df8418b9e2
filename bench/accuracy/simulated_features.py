#!/usr/bin/env python3
"""Sets the features that `zel features` finds in simulated runs beside the truth about them.

Goals: 95 % of the ions that are there to be found are found, with their charge, a mass within 5 ppm and an apex inside
their true limits of retention and mobility; at most 5 % of the reported features match no true ion.

An ion is there to be found when at least three of its isotopes stand above the noise, the lowest intensity that the
simulated instrument records (of a profile peak: its highest point), in at least as many consecutive scans as a hill must
have. In a mobility run a frame counts when the isotope does so in at least as many of its mobility scans as a hill must
have there. Such an isotope is covered when, at the apex of its ion, the instrument cannot resolve it from a stronger
peak of another ion, closer than the width of a peak at half height. All follows from the truth: amount, isotope
pattern, elution and mobility profile. The goal is set for ions with three isotopes that are not covered; how many
of all are found is given, too.

usage: simulated_features.py ZEL [--work DIR] [--only NAME] [--misses] [--with "OPTIONS of zel features"]
"""
import argparse
import bisect
import csv
import math
import os
import shlex
import subprocess
import sys
import tempfile

MASS_PPM = 5.0
MIN_ISOTOPES = 3
PEAK_SIGMA = 5.0  # seconds, the simulator's defaults
PEAK_TAIL = 3.0
MIN_INTENSITY = 5000.0
ISOTOPE_STEP = 1.00286  # Da, of a peptide's averaged isotope peaks

TIME_OF_FLIGHT = ["--time-of-flight", "--resolving-power", "40000"]

MOBILITY = ["--minutes", "8", "--drift", "0.1", "--stray-peaks", "2000", "--mz-noise", "3"] + TIME_OF_FLIGHT

# Name: options of zel simulate, seeds of the runs, shortest hill along retention and along mobility.
RUNS = {
    "lc-ms 30 min, 500 peptides": ([], [11, 12, 13], 5, 0),
    "lc-ms 30 min, 2,000 peptides": (["--peptides", "2000"], [14], 5, 0),
    "lc-ms 30 min, 5,000 peptides": (["--peptides", "5000"], [15], 5, 0),
    "lc-ms profile, 500 peptides": (["--profile", "--resolving-power", "120000"], [16, 17, 18], 5, 0),
    "lc-ms time of flight, 500 peptides": (["--mz-noise", "2"] + TIME_OF_FLIGHT, [19, 20, 21], 5, 0),
    "mobility 500 scans, 300 peptides": (["--peptides", "300", "--mobility-scans", "500"] + MOBILITY, [22, 23], 3, 7),
    "mobility 900 scans, 1,000 peptides": (["--peptides", "1000", "--mobility-scans", "900"] + MOBILITY, [24], 3, 7),
}


def elution(sigma, tail):
    """Height of an exponentially modified Gaussian of unit width parameters over time from its apex, 1 at the apex."""
    def height(t):
        z = (sigma / tail - t / sigma) / math.sqrt(2.0)
        if z > 25.0:
            return math.exp(-t * t / (2.0 * sigma * sigma)) / (z * math.sqrt(math.pi)) / 2.0 / tail
        return math.exp(sigma * sigma / (2.0 * tail * tail) - t / tail) * math.erfc(z) / 2.0 / tail

    low, high = 0.0, 3.0 * tail
    for _ in range(200):  # the apex, by golden section
        a, b = high - (high - low) * 0.618034, low + (high - low) * 0.618034
        low, high = (a, high) if height(a) < height(b) else (low, b)
    apex = (low + high) / 2.0
    return lambda t: height(t + apex) / height(apex)


def width_at(shape, fraction):
    """Where a shape falls to this fraction of its apex, before and behind it."""
    ends = []
    for sign in (-1.0, 1.0):
        low, high = 0.0, 200.0
        for _ in range(60):
            middle = (low + high) / 2.0
            low, high = (middle, high) if shape(sign * middle) > fraction else (low, middle)
        ends.append(low)
    return ends[0] + ends[1]


class Visibility:
    """Tells which ions are there to be found."""

    def __init__(self, scans, mobility_scans, scan_seconds, mobility_sigma_scans, is_profile):
        self.scans = scans
        self.mobility_scans = mobility_scans
        self.scan_seconds = scan_seconds
        self.sigma_scans = mobility_sigma_scans
        # Of a profile peak, five points at half height, this share is in the point at its apex.
        self.apex_share = 2.0 * math.sqrt(math.log(2.0) / math.pi) / 5.0 if is_profile else 1.0
        self.shape = elution(PEAK_SIGMA, PEAK_TAIL)
        self.widths = {}
        self.full_width = width_at(self.shape, 0.01)

    def seconds_above(self, fraction, width_factor):
        key = round(math.log(fraction) * 100.0)
        if key not in self.widths:
            self.widths[key] = width_at(self.shape, fraction)
        return self.widths[key] * width_factor

    def width_factor(self, ion):
        return (ion["rt_end"] - ion["rt_start"]) * 60.0 / self.full_width

    def height(self, ion, rt, mobility):
        """The share of an ion's height that it has at this time and mobility."""
        share = self.shape((rt - ion["rt_apex"]) * 60.0 / self.width_factor(ion))
        if self.mobility_scans:
            width = ion["mobility_end"] - ion["mobility_start"]  # at 1 % of the height, as in time
            share *= math.exp(4.0 * math.log(0.01) * ((mobility - ion["mobility_apex"]) / width) ** 2)
        return share

    def isotopes(self, ion):
        """Which isotopes stand above the noise for long enough."""
        factor = self.width_factor(ion)
        seen = []
        for k, share in enumerate(ion["isotopes"]):
            intensity = ion["apex_intensity"] * share * self.apex_share
            if self.mobility_scans:
                intensity /= self.sigma_scans * math.sqrt(2.0 * math.pi)  # at the apex of mobility
                half = (self.mobility_scans - 1) / 2.0 / self.sigma_scans
                intensity *= math.exp(-0.5 * half * half)  # where it is as wide as a hill must be
            if intensity > MIN_INTENSITY:
                seconds = self.seconds_above(MIN_INTENSITY / intensity, factor)
                if seconds >= self.scans * self.scan_seconds:
                    seen.append(k)
        return seen


class Peaks:
    """All isotope peaks of a run by m/z; knows which ones a stronger one covers."""

    def __init__(self, ions, visibility, resolving_power, is_orbitrap):
        self.visibility = visibility
        self.resolving_power = resolving_power
        self.is_orbitrap = is_orbitrap
        self.peaks = sorted((ion["mz"] + k * ISOTOPE_STEP / ion["charge"], ion["apex_intensity"] * share, i)
                            for i, ion in enumerate(ions) for k, share in enumerate(ion["isotopes"]))
        self.mzs = [peak[0] for peak in self.peaks]
        self.ions = ions

    def width(self, mz):
        """Full width at half height; the resolving power of an Orbitrap is that at m/z 200."""
        return mz / (self.resolving_power * (math.sqrt(200.0 / mz) if self.is_orbitrap else 1.0))

    def is_covered(self, i, k):
        ion = self.ions[i]
        mz = ion["mz"] + k * ISOTOPE_STEP / ion["charge"]
        own = ion["apex_intensity"] * ion["isotopes"][k]
        first = bisect.bisect_left(self.mzs, mz - self.width(mz))
        last = bisect.bisect_right(self.mzs, mz + self.width(mz))
        return any(intensity > own and j != i and
                   intensity * self.visibility.height(self.ions[j], ion["rt_apex"], ion["mobility_apex"]) > own
                   for _, intensity, j in self.peaks[first:last])


def read_table(path):
    with open(path) as stream:
        for row in csv.DictReader(stream, delimiter="\t"):
            yield {key: value for key, value in row.items()}


def read_truth(path):
    ions = []
    for row in read_table(path):
        ion = {key: float(value) for key, value in row.items() if key not in ("sequence", "isotope_fractions")}
        ion["charge"] = int(ion["charge"])
        ion["sequence"] = row["sequence"]
        ion["isotopes"] = [float(text) for text in row["isotope_fractions"].split(",")]
        ions.append(ion)
    return sorted(ions, key=lambda ion: ion["mono_mass"])


def read_features(path):
    return [{key: float(value) if value else None for key, value in row.items()} for row in read_table(path)]


def is_inside(value, low, high):
    return value is None or low <= value <= high


def matches(ions, masses, feature, ppm, same_charge=True):
    """The indices of the ions that a feature may be."""
    low = bisect.bisect_left(masses, feature["mono_mass"] * (1.0 - ppm * 1e-6))
    high = bisect.bisect_right(masses, feature["mono_mass"] * (1.0 + ppm * 1e-6))
    for i in range(low, high):
        ion = ions[i]
        if same_charge and ion["charge"] != feature["charge"]:
            continue
        if not is_inside(feature["rt_apex"], ion["rt_start"], ion["rt_end"]):
            continue
        if ion["mobility_apex"] > 0.0 and not is_inside(
                feature["mobility_apex"], ion["mobility_start"], ion["mobility_end"]):
            continue
        yield i


def why_missed(ion, features):
    """What was reported at the place of an ion instead."""
    near = [f for f in features
            if is_inside(f["rt_apex"], ion["rt_start"], ion["rt_end"])
            and (ion["mobility_apex"] == 0.0
                 or is_inside(f["mobility_apex"], ion["mobility_start"], ion["mobility_end"]))]
    for f in near:
        if f["charge"] == ion["charge"]:
            steps = (f["mono_mass"] - ion["mono_mass"]) / 1.003355
            if abs(steps) < 9.5 and abs(steps - round(steps)) * 1e6 / ion["mono_mass"] < 20.0:
                return "offset %+d" % round(steps) if round(steps) else "mass off by 5 to 20 ppm"
    for f in near:
        for k in range(-1, 8):
            mz = ion["mz"] + k * 1.003355 / ion["charge"]
            if abs(f["mz"] - mz) < 10e-6 * mz:
                return "charge %d for %d" % (f["charge"], ion["charge"])
    return "nothing"


class Outcome:
    """What the runs of one kind came to."""

    def __init__(self):
        self.ion_count = 0
        self.visible_count = 0
        self.visible_found_count = 0
        self.wanted_count = 0
        self.missed = []  # why
        self.feature_count = 0
        self.false_features = []
        self.false_kinds = []
        self.errors = []  # ppm

    def add(self, ions, features, visibility, peaks):
        masses = [ion["mono_mass"] for ion in ions]
        is_found = [False] * len(ions)
        for feature in features:
            hits = list(matches(ions, masses, feature, MASS_PPM))
            for i in hits:
                is_found[i] = True
                self.errors.append((feature["mono_mass"] / ions[i]["mono_mass"] - 1.0) * 1e6)
            if not hits:
                self.false_features.append(feature)
                self.false_kinds.append(why_false(feature, ions, masses))
        seen = [visibility.isotopes(ion) for ion in ions]
        visible = [i for i, isotopes in enumerate(seen) if len(isotopes) >= MIN_ISOTOPES]
        wanted = [i for i in visible
                  if sum(not peaks.is_covered(i, k) for k in seen[i]) >= MIN_ISOTOPES]
        self.missed += [why_missed(ions[i], features) for i in wanted if not is_found[i]]
        self.ion_count += len(ions)
        self.visible_count += len(visible)
        self.visible_found_count += sum(is_found[i] for i in visible)
        self.wanted_count += len(wanted)
        self.feature_count += len(features)

    def tell(self, name, details):
        found = 100.0 * (self.wanted_count - len(self.missed)) / max(self.wanted_count, 1)
        false = 100.0 * len(self.false_features) / max(self.feature_count, 1)
        mean = sum(self.errors) / max(len(self.errors), 1)
        spread = math.sqrt(sum((e - mean) ** 2 for e in self.errors) / max(len(self.errors), 1))
        is_good = found >= 95.0 and false <= 5.0
        visible_found = 100.0 * self.visible_found_count / max(self.visible_count, 1)
        print("%s\t%d\t%d\t%.1f\t%.1f\t%d\t%.1f\t%+.2f\t%.2f\t%s" % (
            name, self.ion_count, self.wanted_count, found, visible_found, self.feature_count, false, mean, spread,
            "yes" if is_good else "NO"), flush=True)
        if details:
            print("  missed: " + count_by(self.missed))
            print("  false: " + count_by(self.false_kinds))
            print("  false by charge: " + count_by(int(f["charge"]) for f in self.false_features))
            print("  false by isotopes: " + count_by(int(f["isotope_count"]) for f in self.false_features))
        return is_good


def count_by(values):
    counts = {}
    for value in values:
        counts[value] = counts.get(value, 0) + 1
    return ", ".join("%s %d" % item for item in sorted(counts.items(), key=lambda item: -item[1]))


def why_false(feature, ions, masses):
    """What a feature without an ion comes from."""
    def is_near(mass, ppm, same_charge=True):
        return any(True for _ in matches(ions, masses, dict(feature, mono_mass=mass), ppm, same_charge))

    if is_near(feature["mono_mass"], 20.0):
        return "mass off by 5 to 20 ppm"
    if is_near(feature["mono_mass"], MASS_PPM, same_charge=False):
        return "other charge of a mass"
    for steps in list(range(-9, 0)) + list(range(1, 10)):
        if is_near(feature["mono_mass"] - steps * 1.003355, 10.0):
            return "offset %+d" % steps
    return "alone"


def simulated(zel, base, options):
    """Makes the run unless it is there."""
    stamp = " ".join(options)
    if not os.path.exists(base + ".done") or open(base + ".done").read() != stamp:
        subprocess.run([zel, "simulate", "-o", base + ".mzML"] + options, check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        with open(base + ".done", "w") as stream:
            stream.write(stamp)


def run(zel, work, name, options, details):
    simulate_options, seeds, scans, mobility_scans = RUNS[name]
    sigma_scans = 0.0
    if mobility_scans:
        count = int(simulate_options[simulate_options.index("--mobility-scans") + 1])
        sigma_scans = 0.01 * (count - 1)  # of a range of 1 V s/cm2
    visibility = Visibility(scans, mobility_scans, 1.0, sigma_scans, "--profile" in simulate_options)
    resolving_power = 60000.0
    if "--resolving-power" in simulate_options:
        resolving_power = float(simulate_options[simulate_options.index("--resolving-power") + 1])
    outcome = Outcome()
    for seed in seeds:
        base = os.path.join(work, "run%d" % seed)
        simulated(zel, base, ["--seed", str(seed)] + simulate_options)
        tool = subprocess.run([zel, "features", base + ".mzML", "-o", work, "--tsv"] + options, check=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        ions = read_truth(base + ".truth.tsv")
        peaks = Peaks(ions, visibility, resolving_power, "--time-of-flight" not in simulate_options)
        outcome.add(ions, read_features(base + ".features.tsv"), visibility, peaks)
        if details:
            print("  " + tool.stdout.strip().split(": ", 1)[1])
    return outcome.tell(name, details)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("zel")
    parser.add_argument("--work", help="folder for runs and results, kept; one that is removed if not given")
    parser.add_argument("--only", default="", help="the runs whose names hold this text")
    parser.add_argument("--misses", action="store_true", help="say what is wrong")
    parser.add_argument("--with", dest="options", default="", type=shlex.split, help="options of zel features")
    arguments = parser.parse_args()
    print("runs\tions\tto be found\tfound %\tfound, covered ones too, %\treported\tfalse %\tmass error ppm\tits spread\tgoals met")
    with tempfile.TemporaryDirectory() as temporary:
        work = arguments.work or temporary
        os.makedirs(work, exist_ok=True)
        good = [run(arguments.zel, work, name, arguments.options, arguments.misses)
                for name in RUNS if arguments.only in name]
    sys.exit(0 if good and all(good) else 1)


if __name__ == "__main__":
    main()
