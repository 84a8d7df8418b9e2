#!/usr/bin/env python3
"""Draws the features of a run over its MS1 signal, as PNG: m/z against time, or against mobility.

Peaks are grey, darker for higher ones. A charge feature is a frame around its isotopes from start to end, coloured by
charge, with a dot at the apex. Without --mz and --rt the picture has two parts: the range in which the features lie, and
the window of the overview that holds most of them, enlarged. A run of a single frame is drawn against mobility, and so
is one with --mobility. Needs matplotlib and numpy (Debian package python3-matplotlib).

usage: draw_features.py RUN.mzML FEATURES.tsv PICTURE.png [--mz A-B] [--rt A-B] [--mobility [A-B]]   (times in minutes)
"""
import argparse
import base64
import csv
import gzip
import xml.etree.ElementTree as ElementTree
import zlib

import matplotlib
import numpy

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402  (the backend comes first)
from matplotlib.collections import PatchCollection  # noqa: E402
from matplotlib.patches import Rectangle  # noqa: E402

PROTON = 1.00727646677
ISOTOPE_STEP = 1.003355
COLOURS = {1: "tab:cyan", 2: "tab:blue", 3: "tab:red", 4: "tab:green", 5: "tab:orange", 6: "tab:purple"}
MOBILITY_ARRAYS = {"MS:1002477", "MS:1002816", "MS:1003006", "MS:1003007", "MS:1003008", "MS:1003153"}
MOBILITIES = {"MS:1002476", "MS:1002815"}
MOST_POINTS = 200000


def terms(element):
    return {term.get("accession"): term for term in element.iter() if term.tag.endswith("cvParam")}


def values_of(array):
    known = terms(array)
    data = base64.b64decode(next(child.text for child in array if child.tag.endswith("binary")) or "")
    if "MS:1000574" in known:
        data = zlib.decompress(data)
    return numpy.frombuffer(data, "<f8" if "MS:1000523" in known else "<f4").astype(float)


def ms1_points(path):
    """Columns of minutes, m/z, intensity and mobility (NaN where there is none) of all points of MS1."""
    stream = gzip.open(path, "rb") if path.endswith(".gz") else open(path, "rb")
    parts = [numpy.empty((0, 4))]
    for _, spectrum in ElementTree.iterparse(stream):
        if not spectrum.tag.endswith("}spectrum"):
            continue
        known = terms(spectrum)
        if known["MS:1000511"].get("value") == "1":
            time = known["MS:1000016"]
            minutes = float(time.get("value")) / (60.0 if time.get("unitName") == "second" else 1.0)
            columns = {"mobility": next((float(known[name].get("value")) for name in MOBILITIES & known.keys()), numpy.nan)}
            for array in (child for child in spectrum.iter() if child.tag.endswith("binaryDataArray")):
                names = terms(array)
                if "MS:1000514" in names:
                    columns["mz"] = values_of(array)
                elif "MS:1000515" in names:
                    columns["intensity"] = values_of(array)
                elif MOBILITY_ARRAYS & names.keys():
                    columns["mobility"] = values_of(array)
            if len(columns.get("mz", ())) > 0:
                parts.append(numpy.column_stack(numpy.broadcast_arrays(
                    minutes, columns["mz"], columns["intensity"], columns["mobility"])))
        spectrum.clear()
    points = numpy.concatenate(parts)
    return points[points[:, 2] > 0.0]


def limits(text):
    low, high = text.split("-")
    return float(low), float(high)


def read_features(path):
    with open(path) as stream:
        return [{key: float(value) for key, value in row.items() if value}
                for row in csv.DictReader(stream, delimiter="\t")]


def isotope_range(feature):
    """m/z of the first and the last isotope that was found."""
    charge = feature["charge"]
    first = feature["mono_mass"] / charge + PROTON
    return first, first + (feature["isotope_count"] - 1) * ISOTOPE_STEP / charge


def with_margin(values, share):
    low, high = min(values), max(values)
    margin = share * (high - low) or 1.0
    return low - margin, high + margin


def richest(values, width):
    """A range of this width around the most values that lie so close together."""
    values = numpy.sort(values)
    ends = numpy.searchsorted(values, values + 0.9 * width, "right")
    first = int(numpy.argmax(ends - numpy.arange(len(values))))
    middle = (values[first] + values[ends[first] - 1]) / 2.0
    return middle - width / 2.0, middle + width / 2.0


def draw_part(axes, points, features, axis, x_range, mz_range):
    """One picture of the points and features inside the ranges."""
    column = {"rt": 0, "mobility": 3}[axis]
    inside = points[(points[:, column] >= x_range[0]) & (points[:, column] <= x_range[1]) &
                    (points[:, 1] >= mz_range[0]) & (points[:, 1] <= mz_range[1])]
    inside = inside[numpy.argsort(inside[:, 2], kind="stable")][-MOST_POINTS:]
    size = numpy.clip(1e5 / (len(inside) + 1), 0.6, 9.0)
    shades = numpy.log10(inside[:, 2]) if len(inside) else []
    axes.scatter(inside[:, column], inside[:, 1], c=shades, cmap="Greys", s=size, linewidths=0, rasterized=True,
                 vmin=1.3 * min(shades, default=0.0) - 0.3 * max(shades, default=1.0), vmax=max(shades, default=1.0))
    shown = 0
    line_width = 1.2 if len(inside) < 20000 else 0.7
    least_height = 0.003 * (mz_range[1] - mz_range[0])
    for charge in sorted({int(feature["charge"]) for feature in features}):
        frames, apexes = [], []
        for feature in features:
            low, high = isotope_range(feature)
            start, end = feature[axis + "_start"], feature[axis + "_end"]
            if int(feature["charge"]) == charge and start <= x_range[1] and end >= x_range[0] and \
                    low <= mz_range[1] and high >= mz_range[0]:
                bottom = min(low - 0.3 * ISOTOPE_STEP / charge, (low + high - least_height) / 2.0)
                top = max(high + 0.3 * ISOTOPE_STEP / charge, (low + high + least_height) / 2.0)
                frames.append(Rectangle((start, bottom), end - start, top - bottom))
                apexes.append((feature[axis + "_apex"], feature["mz"]))
        if frames:
            colour = COLOURS.get(charge, "black")
            axes.add_collection(PatchCollection(frames, facecolor=matplotlib.colors.to_rgba(colour, 0.12),
                                                edgecolor=colour, linewidth=line_width))
            axes.scatter([apex[0] for apex in apexes], [apex[1] for apex in apexes], color=colour, s=24.0 * line_width,
                         edgecolors="white", linewidths=0.5, zorder=3,
                         label="%d+: %d" % (charge, len(frames)))
            shown += len(frames)
    axes.set_xlim(x_range)
    axes.set_ylim(mz_range)
    axes.set_xlabel({"rt": "retention time, min", "mobility": "mobility, in the unit of the run"}[axis])
    axes.set_ylabel("m/z")
    axes.set_title("%d charge features, %d points%s" % (
        shown, len(inside), " (the highest)" if len(inside) == MOST_POINTS else ""), fontsize="medium")
    if shown:
        axes.legend(loc="upper left", bbox_to_anchor=(1.0, 1.0), title="charge: count", frameon=False)


def draw(arguments):
    points = ms1_points(arguments.run)
    features = read_features(arguments.features)
    if len(points) == 0:
        raise SystemExit("draw_features.py: %s has no MS1 signal" % arguments.run)
    has_mobility = not numpy.isnan(points[:, 3]).all()
    one_frame = len(set(points[:, 0])) == 1
    axis = "mobility" if arguments.mobility is not None or (one_frame and has_mobility) else "rt"
    if axis == "mobility" and not (has_mobility and all("mobility_apex" in feature for feature in features)):
        raise SystemExit("draw_features.py: the run or the table has no mobility")
    if axis == "mobility" and arguments.rt:
        low, high = limits(arguments.rt)
        points = points[(points[:, 0] >= low) & (points[:, 0] <= high)]
        features = [feature for feature in features if low <= feature["rt_apex"] <= high]

    x_text = arguments.mobility if axis == "mobility" else arguments.rt
    x_range = limits(x_text) if x_text else with_margin(points[:, {"rt": 0, "mobility": 3}[axis]], 0.01)
    if arguments.mz:
        mz_range = limits(arguments.mz)
    elif features:  # most of the signal beyond is background
        mz_range = with_margin([mz for feature in features for mz in isotope_range(feature)], 0.03)
    else:
        mz_range = with_margin(points[:, 1], 0.01)
    parts = [(x_range, mz_range)]
    if features and not arguments.mz and not x_text:
        mz_part = richest([feature["mz"] for feature in features], 0.04 * (mz_range[1] - mz_range[0]))
        near = [feature[axis + "_apex"] for feature in features if mz_part[0] <= feature["mz"] <= mz_part[1]]
        parts.append((richest(near, 0.4 * (x_range[1] - x_range[0])), mz_part))

    figure, panels = plt.subplots(len(parts), figsize=(14, 8 * len(parts)), squeeze=False)
    for panel, part in zip(panels[:, 0], parts):
        draw_part(panel, points, features, axis, *part)
    if len(parts) == 2:
        (left, right), (bottom, top) = parts[1]
        panels[0, 0].add_patch(Rectangle((left, bottom), right - left, top - bottom, fill=False, linewidth=1.5, zorder=4))
        panels[1, 0].set_title("The frame above: " + panels[1, 0].get_title(), fontsize="medium")
    figure.tight_layout()
    figure.savefig(arguments.picture, dpi=100)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("run")
    parser.add_argument("features")
    parser.add_argument("picture")
    parser.add_argument("--mz")
    parser.add_argument("--rt")
    parser.add_argument("--mobility", nargs="?", const="")
    draw(parser.parse_args())
