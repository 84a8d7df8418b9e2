#!/usr/bin/env bash
# Runs every test under the address and undefined-behaviour sanitizers, then under the thread sanitizer, then every fuzz
# target for a minute (or as many seconds as the first argument says) from seeds that the project makes itself.
set -euo pipefail
cd "$(dirname "$0")/.."
fuzz_seconds=${1:-60}
scripts/install.sh
cmake --workflow --preset asan
cmake --workflow --preset tsan

cmake --preset fuzz
cmake --build --preset fuzz
corpus=build/fuzz/corpus
build/fuzz/bin/fuzz_seeds "$corpus"
for target in turboxiccache turboxicsettings formula networkfile; do
    echo "Fuzzing $target for $fuzz_seconds s"
    (cd build/fuzz && "bin/fuzz_$target" -max_total_time="$fuzz_seconds" -print_final_stats=1 -verbosity=0 "corpus/$target")
done
