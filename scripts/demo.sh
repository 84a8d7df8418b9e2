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
"$zel" simulate -o "$out/run.mzML" --minutes 20 --peptides 200 --seed 7
"$zel" info "$out/run.mzML"

# Windows of 10 ppm and three minutes around the eight strongest ions of the truth.
awk -F'\t' '
    NR == 1 { for (i = 1; i <= NF; ++i) column[$i] = i; next }
    { print $column["apex_intensity"] "\t" $column["sequence"] "/" $column["charge"] "+\t" $column["mz"] "\t" $column["rt_apex"] }
' "$out/run.truth.tsv" | sort -k1,1gr | awk -F'\t' '!seen[$2]++' | sed -n 1,8p > "$out/strongest.tsv"
{
    printf 'name\tmz\tppm\trt_start\trt_end\n'
    awk -F'\t' '{ printf "%s\t%s\t10\t%s\t%s\n", $2, $3, $4 - 1.5, $4 + 1.5 }' "$out/strongest.tsv"
} > "$out/windows.tsv"

"$zel" xic "$out/run.mzML" --windows "$out/windows.tsv" -o "$out/xics.tsv" --plot "$out/xics.html"
echo
awk -F'\t' '
    FNR == NR { apex[$2] = $4; mz[$2] = $3; order[++count] = $2; next }
    FNR > 1 { ++points[$1]; if ($3 > height[$1]) { height[$1] = $3; time[$1] = $2 } }
    END {
        printf "%-34s %10s %7s %13s %13s %12s\n", "ion", "m/z", "points", "apex (min)", "truth (min)", "intensity"
        for (i = 1; i <= count; ++i) {
            name = order[i]
            printf "%-34s %10.4f %7d %13.3f %13.3f %12.4g\n", name, mz[name], points[name], time[name], apex[name], height[name]
        }
    }
' "$out/strongest.tsv" "$out/xics.tsv"
echo
echo "Chromatograms: $out/xics.tsv, drawn in $out/xics.html (open it in any browser)"
