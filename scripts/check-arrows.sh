#!/usr/bin/env bash
# Checks that no folder includes against the direction of dependencies (docs/architecture.md).
set -euo pipefail
cd "$(dirname "$0")/.."

status=0
# forbid FOLDER PATTERN: no file below FOLDER includes a path that matches PATTERN.
forbid() {
    [ -d "$1" ] || return 0
    if grep -rnE "#include \"($2)" --include='*.h' --include='*.cpp' "$1"; then
        echo "$1 must not include these" >&2
        status=1
    fi
}

outside='tools/|tests/|bench/|fuzz/'
algo=$(find algo/src -name '*.h' -printf '%P|' | sed 's/|$//')
forbid common/stable "common/(ms_types|core_mini)/|chemical_model/|ml/|$outside|$algo"
forbid common/ms_types "common/core_mini/|chemical_model/|ml/|$outside|$algo"
forbid chemical_model "common/(ms_types|core_mini)/|ml/|$outside|$algo"
forbid common/core_mini "ml/|$outside|$algo"
forbid ml "$outside|$algo"
forbid algo "$outside"
forbid tools 'tests/|bench/|fuzz/'
exit "$status"
