#!/usr/bin/env bash
# Formats all C++ sources; with --check only tells which ones differ, and fails when any does.
set -euo pipefail
cd "$(dirname "$0")/.."
formatter=$(command -v clang-format-14 || command -v clang-format)
mode=(-i)
[ "${1:-}" != --check ] || mode=(--dry-run --Werror)
git ls-files -z --cached --others --exclude-standard -- '*.h' '*.cpp' | xargs -0 -r "$formatter" "${mode[@]}"
