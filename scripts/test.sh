#!/usr/bin/env bash
# Installs what is missing, builds the optimised preset and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install.sh
cmake --preset release
cmake --build --preset release
ctest --preset release
