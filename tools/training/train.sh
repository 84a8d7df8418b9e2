#!/usr/bin/env bash
# Trains the networks anew and writes data/charge_mono.znet (or the file that is given). See README.md.
set -euo pipefail
cd "$(dirname "$0")/../.."
output=$(realpath -m "${1:-data/charge_mono.znet}")
pattern_seed=1
example_count=1300000

cmake --preset release
cmake --build --preset release --target zel_training_patterns
patterns=$(mktemp "${TMPDIR:-/tmp}/zel-patterns.XXXXXX")
trap 'rm -f "$patterns"' EXIT
build/release/bin/zel_training_patterns "$patterns" "$pattern_seed" "$example_count"

# One thread and one kind of kernel, whatever the processor offers beyond AVX2: the sums keep their order.
export OMP_NUM_THREADS=1 OPENBLAS_NUM_THREADS=1 OPENBLAS_CORETYPE=Haswell ATEN_CPU_CAPABILITY=avx2
/usr/bin/python3 tools/training/train.py "$patterns" "$output"
