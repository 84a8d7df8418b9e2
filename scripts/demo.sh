#!/usr/bin/env bash
# Installs what is missing, builds, simulates a run of which everything is known, extracts chromatograms of its
# strongest ions, and shows them beside the truth. Leaves its files in build/demo.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install.sh
cmake --preset release > /dev/null
cmake --build --preset release --target zel

zel=build/release/bin/zel
out=build/demo
mkdir -p "$out"
echo
echo "A run of 20 minutes with 200 peptides:"
"$zel" simulate -o "$out/run.mzML" --minutes 20 --peptides 200 --seed 7 --windows-out "$out/windows.tsv"
"$zel" info "$out/run.mzML"
head -n 9 "$out/windows.tsv" > "$out/strongest.tsv"
"$zel" xic "$out/run.mzML" --windows "$out/strongest.tsv" -o "$out/xics.tsv" --plot "$out/xics.html"
echo
awk -F'\t' '
    FNR == 1 { ++file; for (i = 1; i <= NF; ++i) column[$i] = i; next }
    file == 1 { truth[$column["sequence"] "/" $column["charge"] "+"] = $column["rt_apex"] }
    file == 2 { mz[$column["name"]] = $column["mz"]; order[++count] = $column["name"] }
    file == 3 {
        name = $column["name"]
        ++points[name]
        if ($column["intensity"] > height[name]) { height[name] = $column["intensity"]; apex[name] = $column["rt_min"] }
    }
    END {
        printf "%-34s %10s %7s %13s %13s %12s\n", "ion", "m/z", "points", "apex (min)", "truth (min)", "intensity"
        for (i = 1; i <= count; ++i) {
            name = order[i]
            printf "%-34s %10.4f %7d %13.3f %13.3f %12.4g\n", name, mz[name], points[name], apex[name], truth[name], height[name]
        }
    }
' "$out/run.truth.tsv" "$out/strongest.tsv" "$out/xics.tsv"
echo
echo "Chromatograms: $out/xics.tsv, drawn in $out/xics.html (open it in any browser)"
