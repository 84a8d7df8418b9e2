#!/usr/bin/env python3
"""Checks `zel xic` against sums made independently of it.

For each run, random windows (m/z windows of 5 to 50 ppm around peaks of the run and around random m/z, time windows of
any length) are summed over the same MS1 spectra, read by pymzml (mzML; Debian package python3-pymzml) or by the few
lines below (mzXML), and compared with what the tool writes.

usage: check_xic.py ZEL RUN... [--windows N]
"""
import argparse
import base64
import csv
import gzip
import os
import random
import struct
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
import zlib


def open_run(path):
    return gzip.open(path, "rb") if path.endswith(".gz") else open(path, "rb")


def read_mzxml(path):
    """MS1 spectra as (minutes, [(mz, intensity)])."""
    for _, element in ElementTree.iterparse(open_run(path)):
        if element.tag.rsplit("}", 1)[-1] != "scan" or element.get("msLevel") != "1":
            continue
        peaks = next(child for child in element if child.tag.endswith("peaks"))
        data = base64.b64decode(peaks.text or "")
        if peaks.get("compressionType") == "zlib":
            data = zlib.decompress(data)
        code = "d" if peaks.get("precision") == "64" else "f"
        values = struct.unpack(">%d%s" % (len(data) // struct.calcsize(code), code), data)
        seconds = float(element.get("retentionTime")[2:-1])
        yield seconds / 60.0, sorted(zip(values[::2], values[1::2]))
        element.clear()


def read_mzml(path):
    import pymzml

    with tempfile.NamedTemporaryFile(suffix=".mzML") as plain:
        plain.write(open_run(path).read())
        plain.flush()
        for spectrum in pymzml.run.Reader(plain.name):
            if spectrum.ms_level == 1:
                minutes = spectrum.scan_time_in_minutes()
                yield minutes, sorted((float(mz), float(y)) for mz, y in spectrum.peaks("raw"))


def random_windows(spectra, count, generator):
    """(mz start, mz end, minutes start, minutes end)"""
    times = [minutes for minutes, _ in spectra]
    peaks = [mz for _, points in spectra for mz, _ in points[:: max(1, len(points) // 50)]]
    for i in range(count):
        centre = generator.choice(peaks) if i % 4 else generator.uniform(min(peaks), max(peaks))
        half = centre * generator.uniform(5e-6, 50e-6)
        start, end = sorted((generator.uniform(times[0], times[-1]), generator.uniform(times[0], times[-1])))
        yield centre - half, centre + half, start, end


def run_tool(zel, path, windows):
    with tempfile.TemporaryDirectory() as folder:
        table = os.path.join(folder, "windows.tsv")
        output = os.path.join(folder, "xics.tsv")
        with open(table, "w") as stream:
            stream.write("name\tmz_start\tmz_end\trt_start\trt_end\n")
            for i, window in enumerate(windows):
                stream.write("\t".join(["w%d" % i] + [repr(value) for value in window]) + "\n")
        # As stored: the independent readers do not pick peaks.
        command = [zel, "xic", path, "--windows", table, "--profile", "-o", output]
        subprocess.run(command, check=True, stderr=subprocess.DEVNULL)
        xics = {}
        with open(output) as stream:
            for row in csv.DictReader(stream, delimiter="\t"):
                xics.setdefault(row["name"], []).append((float(row["rt_min"]), float(row["intensity"])))
        return [xics.get("w%d" % i, []) for i in range(len(windows))]


def check(zel, path, count):
    reader = read_mzxml if "mzxml" in path.lower() else read_mzml
    spectra = list(reader(path))
    windows = list(random_windows(spectra, count, random.Random(1)))
    largest = 0.0
    points = 0
    signal = 0
    for window, xic in zip(windows, run_tool(zel, path, windows)):
        low, high, start, end = window
        expected = [
            (minutes, sum(y for mz, y in peaks if low - 1e-10 <= mz <= high + 1e-10))
            for minutes, peaks in spectra
            if start - 1e-6 <= minutes <= end + 1e-6
        ]
        if len(expected) != len(xic):
            sys.exit("%s: window %s has %d points, expected %d" % (path, window, len(xic), len(expected)))
        for (minutes, y), (tool_minutes, tool_y) in zip(expected, xic):
            if abs(minutes - tool_minutes) > 1e-6:
                sys.exit("%s: window %s: time %r, expected %r" % (path, window, tool_minutes, minutes))
            points += 1
            signal += y > 0
            largest = max(largest, abs(y - tool_y) / max(y, 1.0))
    print("%s\t%d windows\t%d points, %d with signal\tlargest relative difference %.2g"
          % (os.path.basename(path), count, points, signal, largest))
    return largest


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("zel")
    parser.add_argument("runs", nargs="+")
    parser.add_argument("--windows", type=int, default=250)
    arguments = parser.parse_args()
    worst = max(check(arguments.zel, path, arguments.windows) for path in arguments.runs)
    sys.exit(0 if worst < 1e-6 else 1)
