#!/usr/bin/env bash
# Runs every test under the address and undefined-behaviour sanitizers, then under the thread sanitizer, then every fuzz
# target for a minute (or as many seconds as the first argument says), from seeds that fuzz_seeds makes or fuzz/seeds has.
set -euo pipefail
cd "$(dirname "$0")/.."
fuzz_seconds=${1:-60}
scripts/install.sh
cmake --workflow --preset asan
cmake --workflow --preset tsan

cmake --preset fuzz
cmake --build --preset fuzz
seeds=$PWD/fuzz/seeds
cd build/fuzz
sed 's#^#corpus/#' fuzz/targets.txt | xargs mkdir -p
bin/fuzz_seeds corpus
while read -r target; do
    echo "Fuzzing $target for $fuzz_seconds s"
    folders=("corpus/$target")
    [ ! -d "$seeds/$target" ] || folders+=("$seeds/$target")
    "bin/fuzz_$target" -max_total_time="$fuzz_seconds" -print_final_stats=1 -verbosity=0 "${folders[@]}" < /dev/null
done < fuzz/targets.txt
