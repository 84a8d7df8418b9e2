#!/usr/bin/env bash
# Runs every test under the address and undefined-behaviour sanitizers, then under the thread sanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install.sh
cmake --workflow --preset asan
cmake --workflow --preset tsan
