#!/usr/bin/env python3
"""Measures `zel targeted` against simulated runs of which everything is known.

Each run is made by `zel simulate`; its true ions become a table of matches, one to three for each ion inside the middle
half of its peak; the features that the tool finds are joined with the truth by sequence and charge.

- found: ions with S/N of 10 and more, which is the true apex of the isotope that is cut over the least intensity that
  the simulator records. Apex within one scan of the truth; both limits within 20 % of the true width (at 1 % of the
  apex height) of the truth; area against the noiseless area inside the true limits. "at best" is how often the highest
  of the ion's own points, with the simulator's noise and nothing else, lies within one scan.
- pairs: isomers of equal amount, matched under one name. Split: the two apexes lie in two different intervals.
- runs: ions with a feature in at least two of four runs with drift. Agreed: after alignment (retention time plus
  warp_offset) the apexes of an ion lie within two scans of their median; and the number of intervals is the same in
  all runs.

usage: targeted.py ZEL [--only found|pairs|runs] [--seed N]
"""
import argparse
import csv
import math
import os
import random
import re
import statistics
import subprocess
import tempfile

ISOTOPE_MASSES = [1800, 3000, 5000, 8000, 10000, 20000, 40000, 80000]  # of the default --isotope-selector
# What `zel simulate` does unless it is set otherwise.
LEAST_INTENSITY = 5000.0
INTENSITY_NOISE = 0.05
INTENSITY_PER_ION = 1000.0
LEAST_SIGNAL_TO_NOISE = 10.0


class Peak:
    """The exponentially modified Gaussian of the simulator, any unit of time, apex at 0."""

    def __init__(self, sigma, tail):
        self.sigma, self.tail, self.apex = sigma, tail, 0.0
        low, high = 0.0, tail
        for _ in range(80):
            middle = (low + high) / 2
            rises = self.height(middle + 1e-6) > self.height(middle)
            low, high = (middle, high) if rises else (low, middle)
        self.apex = low
        self.top = self.height(0.0)
        self.start = -self._reach(0.01, -1)
        self.end = self._reach(0.01, 1)
        self.width = self.end - self.start

    def height(self, time):
        """Of area 1."""
        time += self.apex
        if self.tail == 0.0:
            return math.exp(-0.5 * (time / self.sigma) ** 2) / (self.sigma * math.sqrt(2 * math.pi))
        ratio = self.sigma / self.tail
        z = (ratio - time / self.sigma) / math.sqrt(2)
        return math.exp(0.5 * ratio * ratio - time / self.tail) * math.erfc(z) / (2 * self.tail)

    def _reach(self, share, direction):
        low, high = 0.0, 5 * self.sigma + 20 * self.tail
        for _ in range(80):
            middle = (low + high) / 2
            inside = self.height(direction * middle) > share * self.top
            low, high = (middle, high) if inside else (low, middle)
        return low

    def width_at(self, share):
        return self._reach(share, -1) + self._reach(share, 1)

    def area(self):
        """Between the limits at 1 % of the height; of all 1."""
        count = 4000
        step = self.width / count
        return step * sum(self.height(self.start + (i + 0.5) * step) for i in range(count))


class Ion:
    """A row of the truth."""

    def __init__(self, row, peak):
        self.sample = int(row["sample"])
        self.key = (row["sequence"], row["charge"])
        self.mz, self.mass = float(row["mz"]), float(row["mono_mass"])
        self.start, self.apex, self.end = (float(row[name]) for name in ("rt_start", "rt_apex", "rt_end"))
        fractions = [float(text) for text in row["isotope_fractions"].split(",")]
        isotope = next(i for i, mass in enumerate(ISOTOPE_MASSES) if mass >= self.mass)
        fraction = fractions[isotope] if isotope < len(fractions) else 0.0
        self.height = float(row["apex_intensity"]) * fraction
        self.area = float(row["area"]) * 60.0 * fraction * peak.area()  # counts * s between the limits

    @property
    def signal_to_noise(self):
        return self.height / LEAST_INTENSITY


def read_table(path):
    with open(path) as stream:
        return list(csv.DictReader(stream, delimiter="\t"))


class Measurement:
    def __init__(self, zel, folder, seed):
        self.zel, self.folder, self.seed = zel, folder, seed

    def path(self, name):
        return os.path.join(self.folder, name)

    def run(self, *arguments):
        done = subprocess.run([self.zel] + [str(argument) for argument in arguments], capture_output=True, text=True)
        if done.returncode:
            raise SystemExit("zel %s\n%s" % (" ".join(map(str, arguments)), done.stderr))
        counts = re.search(r"(\d+) ions aligned, (\d+) left", done.stderr)
        self.aligned = ", ".join(counts.groups()) if counts else "-"

    def simulate(self, sigma=5.0, tail=3.0, **options):
        """Writes sim.mzML, or sim_1.mzML, ..., and gives the peak shape and the true ions."""
        arguments = ["simulate", "-o", self.path("sim.mzML"), "--seed", self.seed]
        arguments += ["--peak-sigma", sigma, "--peak-tail", tail]
        for name, value in options.items():
            arguments += ["--" + name.replace("_", "-"), value]
        self.run(*arguments)
        peak = Peak(sigma, tail)
        return peak, [Ion(row, peak) for row in read_table(self.path("sim.truth.tsv"))]

    def write_matches(self, ions, names=None):
        generator = random.Random(self.seed)
        several = any(ion.sample > 1 for ion in ions)
        with open(self.path("psms.tsv"), "w") as stream:
            stream.write("run\tsequence\tcharge\tmz\trt\n")
            for ion in ions:
                sequence = (names or {}).get(ion.key[0], ion.key[0])
                run = "sim_%d" % ion.sample if several else "sim"
                for _ in range(generator.randint(1, 3)):
                    time = ion.apex + generator.uniform(-0.25, 0.25) * (ion.end - ion.start)
                    stream.write("\t".join([run, sequence, ion.key[1], repr(ion.mz), repr(time)]) + "\n")

    def targeted(self, options, runs=("sim.mzML",)):
        """The rows by run, sequence and charge."""
        self.run("targeted", *[self.path(run) for run in runs], "--psms", self.path("psms.tsv"),
                 "-o", self.path("out.tsv"), *options.split())
        features = {}
        for row in read_table(self.path("out.tsv")):
            for name in ("rt_start", "rt_apex", "rt_end", "area", "intensity", "warp_offset"):
                row[name] = float(row[name])
            features.setdefault((row["run"], row["sequence"], row["charge"]), []).append(row)
        return features


def shown(options):
    return "`%s`" % options if options else "none"


def percent(flags):
    flags = list(flags)
    return "%.1f" % (100.0 * sum(flags) / len(flags)) if flags else "-"


def best_apexes(ions, peak, interval, seed):
    """Whether the highest noisy point of each ion alone lies within one scan of the truth."""
    generator = random.Random(seed)
    for ion in ions:
        scale = (ion.end - ion.start) * 60.0 / peak.width
        phase = generator.random()
        highest, where = -1.0, 0
        for i in range(-40, 41):
            height = ion.height * peak.height((i + phase) * interval / scale) / peak.top
            noise = math.exp(INTENSITY_NOISE * generator.gauss(0, 1))
            counted = height * noise + math.sqrt(height * noise * INTENSITY_PER_ION) * generator.gauss(0, 1)
            if counted > highest:
                highest, where = counted, i + phase
        yield abs(where) <= 1.0


def found(measurement):
    print("\n| Peptides, minutes, scans every | Options | Ions | Found | Apex within 1 scan (at best) | Both limits | "
          "Area off by: median, 95 % |")
    print("|---|---|---|---|---|---|---|")
    tight = "--adaptive-tighten-negligible-ratio 0.01"
    for peptides, minutes, interval, all_options in (
            (500, 180, 3, [""]), (500, 180, 4, [""]), (1000, 30, 1, [""]),
            (1000, 30, 3, ["", tight, "--mode adaptive-v2", "--mode adaptive-v2 " + tight, "--mode fixed",
                           "--mode prototype"])):
        peak, ions = measurement.simulate(peptides=peptides, minutes=minutes, scan_interval=interval)
        measurement.write_matches(ions)
        ions = [ion for ion in ions if ion.signal_to_noise >= LEAST_SIGNAL_TO_NOISE]
        best = percent(best_apexes(ions, peak, interval, measurement.seed))
        for options in all_options:
            features = measurement.targeted(options)
            joined = [(ion, features.get(("sim",) + ion.key)) for ion in ions]
            # Of several intervals, the one with the highest apex.
            joined = [(ion, max(rows, key=lambda row: row["intensity"])) for ion, rows in joined if rows]
            errors = sorted(abs(row["area"] / ion.area - 1.0) for ion, row in joined)
            apexes = [abs(row["rt_apex"] - ion.apex) * 60.0 <= interval * 1.0001 for ion, row in joined]
            limits = [max(abs(row["rt_start"] - ion.start), abs(row["rt_end"] - ion.end)) <= 0.2 * (ion.end - ion.start)
                      for ion, row in joined]
            missing = [False] * (len(ions) - len(joined))
            print("| %d, %d, %d s | %s | %d | %s | %s (%s) | %s | %.1f, %.1f |" % (
                peptides, minutes, interval, shown(options), len(ions), percent([True] * len(joined) + missing),
                percent(apexes + missing), best, percent(limits + missing),
                100.0 * statistics.median(errors), 100.0 * errors[int(0.95 * len(errors))]), flush=True)


def is_split(rows, first, second):
    def holding(ion):
        return next((i for i, row in enumerate(rows) if row["rt_start"] <= ion.apex <= row["rt_end"]), None)

    return None not in (holding(first), holding(second)) and holding(first) != holding(second)


def pairs(measurement):
    print("\n| Peak width at half height | Apart | Options | Pairs | Split |\n|---|---|---|---|---|")
    for sigma, tail in ((5.0, 3.0), (15.0, 9.0)):
        for apart in (1.5, 2.0):
            peak, ions = measurement.simulate(sigma, tail, peptides=500, minutes=60, isomers_apart=apart,
                                              background=0)
            twins = {}
            for ion in ions:
                twins.setdefault((round(ion.mass, 6), "".join(sorted(ion.key[0])), ion.key[1]), []).append(ion)
            twins = [sorted(pair, key=lambda ion: ion.apex) for pair in twins.values() if len(pair) == 2]
            twins = [pair for pair in twins if min(ion.signal_to_noise for ion in pair) >= LEAST_SIGNAL_TO_NOISE]
            names = {second.key[0]: first.key[0] for first, second in twins}
            measurement.write_matches([ion for pair in twins for ion in pair], names)
            width = peak.width_at(0.5)
            for options in ("", "--adaptive-smoothing-st-dev 0.03", "--mode adaptive-v2"):
                features = measurement.targeted(options)
                split = [is_split(features.get(("sim",) + first.key, []), first, second) for first, second in twins]
                print("| %.0f s | %.1f | %s | %d | %s |" % (width, apart, shown(options),
                                                         len(split), percent(split)), flush=True)


def aligned_ions(features):
    """The rows of each ion by run, for ions in at least two runs."""
    by_ion = {}
    for (run, sequence, charge), rows in features.items():
        by_ion.setdefault((sequence, charge), {})[run] = rows
    return [runs for runs in by_ion.values() if len(runs) >= 2]


def apexes_agree(runs, limit):
    """Whether the highest apexes of all runs lie within `limit` minutes of their median."""
    apexes = []
    for rows in runs.values():
        top = max(rows, key=lambda row: row["intensity"])
        apexes.append(top["rt_apex"] + top["warp_offset"])
    middle = statistics.median_low(apexes)
    return max(abs(apex - middle) for apex in apexes) <= limit * 1.0001


def runs(measurement):
    print("\n| Scans every | Peak width at half height | Options | Ions | Apexes agree: before, after | "
          "Interval counts agree: before, after | Aligned, not |")
    print("|---|---|---|---|---|---|---|")
    names = ["sim_%d.mzML" % (i + 1) for i in range(4)]
    for interval, sigma, tail in ((1, 5.0, 3.0), (2, 5.0, 3.0), (3, 5.0, 3.0), (3, 10.0, 6.0)):
        peak, ions = measurement.simulate(sigma, tail, peptides=500, minutes=60, samples=4, drift=2,
                                          scan_interval=interval)
        measurement.write_matches(ions)
        width = peak.width_at(0.5)
        for options in ("", "--mode adaptive-v2"):
            before = aligned_ions(measurement.targeted(options + " --align disabled", names))
            after = aligned_ions(measurement.targeted(options + " --align full", names))
            limit = 2.0 * interval / 60.0

            def same_count(ion):
                return len({len(rows) for rows in ion.values()}) == 1

            print("| %d s | %.0f s | %s | %d | %s, %s | %s, %s | %s |" % (
                interval, width, shown(options), len(after),
                percent(apexes_agree(ion, limit) for ion in before), percent(apexes_agree(ion, limit) for ion in after),
                percent(map(same_count, before)), percent(map(same_count, after)), measurement.aligned), flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("zel")
    parser.add_argument("--only", choices=["found", "pairs", "runs"])
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        measurement = Measurement(os.path.abspath(arguments.zel), folder, arguments.seed)
        for name, measure in (("found", found), ("pairs", pairs), ("runs", runs)):
            if arguments.only in (None, name):
                measure(measurement)


if __name__ == "__main__":
    main()
