#!/usr/bin/env python3
"""Draws the features of a run over its MS1 signal: m/z against time, as PNG.

Peaks are grey, darker for higher ones. A charge feature is a line at the m/z of its strongest isotope from start to end,
with ticks for its first isotopes, coloured by charge. Needs matplotlib (Debian package python3-matplotlib).

usage: draw_features.py RUN.mzML FEATURES.tsv PICTURE.png [--mz A-B] [--rt A-B]   (times in minutes)
"""
import argparse
import base64
import csv
import gzip
import struct
import xml.etree.ElementTree as ElementTree
import zlib

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402  (the backend comes first)

PROTON = 1.00727646677
ISOTOPE_STEP = 1.003355
COLOURS = {1: "tab:gray", 2: "tab:blue", 3: "tab:red", 4: "tab:green", 5: "tab:orange", 6: "tab:purple"}


def terms(element):
    return {term.get("accession"): term for term in element.iter() if term.tag.endswith("cvParam")}


def values_of(array):
    known = terms(array)
    data = base64.b64decode(next(child.text for child in array if child.tag.endswith("binary")) or "")
    if "MS:1000574" in known:
        data = zlib.decompress(data)
    code = "d" if "MS:1000523" in known else "f"
    return struct.unpack("<%d%s" % (len(data) // struct.calcsize(code), code), data)


def ms1_peaks(path):
    """(minutes, m/z, intensity) of all points of MS1."""
    stream = gzip.open(path, "rb") if path.endswith(".gz") else open(path, "rb")
    for _, spectrum in ElementTree.iterparse(stream):
        if not spectrum.tag.endswith("}spectrum"):
            continue
        known = terms(spectrum)
        if known["MS:1000511"].get("value") == "1":
            time = known["MS:1000016"]
            minutes = float(time.get("value")) / (60.0 if time.get("unitName") == "second" else 1.0)
            mz, intensity = (), ()
            for array in (child for child in spectrum.iter() if child.tag.endswith("binaryDataArray")):
                names = terms(array)
                if "MS:1000514" in names:
                    mz = values_of(array)
                elif "MS:1000515" in names:
                    intensity = values_of(array)
            for point in zip(mz, intensity):
                yield (minutes,) + point
        spectrum.clear()


def limits(text):
    low, high = text.split("-")
    return float(low), float(high)


def draw(arguments):
    mz_low, mz_high = limits(arguments.mz) if arguments.mz else (0.0, 1e9)
    rt_low, rt_high = limits(arguments.rt) if arguments.rt else (0.0, 1e9)
    peaks = [peak for peak in ms1_peaks(arguments.run)
             if mz_low <= peak[1] <= mz_high and rt_low <= peak[0] <= rt_high and peak[2] > 0.0]
    peaks.sort(key=lambda peak: peak[2])
    figure, axes = plt.subplots(figsize=(14, 9))
    shades = [i / len(peaks) for i in range(len(peaks))]
    axes.scatter([peak[0] for peak in peaks], [peak[1] for peak in peaks], c=shades, cmap="Greys", vmin=-0.3, vmax=1.0,
                 s=3, linewidths=0)
    with open(arguments.features) as stream:
        features = [{key: float(value) for key, value in row.items() if value}
                    for row in csv.DictReader(stream, delimiter="\t")]
    for feature in features:
        charge = int(feature["charge"])
        colour = COLOURS.get(charge, "black")
        first = feature["mono_mass"] / charge + PROTON
        axes.plot([feature["rt_start"], feature["rt_end"]], [feature["mz"]] * 2, color=colour, linewidth=1.5)
        isotopes = [first + k * ISOTOPE_STEP / charge for k in range(int(feature["isotope_count"]))]
        axes.plot([feature["rt_apex"]] * len(isotopes), isotopes, "_-", color=colour, markersize=8, linewidth=0.7)
    for charge, colour in COLOURS.items():
        axes.plot([], [], color=colour, label="%d+" % charge)
    axes.set_xlim(min(peak[0] for peak in peaks), max(peak[0] for peak in peaks))
    axes.set_ylim(min(peak[1] for peak in peaks), max(peak[1] for peak in peaks))
    axes.set_xlabel("retention time, min")
    axes.set_ylabel("m/z")
    axes.legend(loc="upper right")
    figure.tight_layout()
    figure.savefig(arguments.picture, dpi=110)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("run")
    parser.add_argument("features")
    parser.add_argument("picture")
    parser.add_argument("--mz")
    parser.add_argument("--rt")
    draw(parser.parse_args())
