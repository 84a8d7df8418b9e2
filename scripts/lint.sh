#!/usr/bin/env bash
# Runs clang-tidy over the sources of the library and the tool, with the compile commands of the release build; any
# finding fails. Files may be given. With --changed only those are taken that differ from where the branch left main,
# or on main from five commits ago, the newest changes first and at most ZEL_LINT_FILES of them (default 20).
set -euo pipefail
cd "$(dirname "$0")/.."
limit=${ZEL_LINT_FILES:-20}
tidy=$(command -v clang-tidy-14 || command -v clang-tidy)
export tidy

# The commit to compare with; none where the clone holds no earlier one.
base() {
    local ref commit steps
    for ref in origin/HEAD origin/main main; do
        commit=$(git merge-base HEAD "$ref" 2> /dev/null) || continue
        [ "$commit" = "$(git rev-parse HEAD)" ] || { echo "$commit"; return; }
    done
    for steps in 5 4 3 2 1; do
        git rev-parse --verify --quiet "HEAD~$steps" && return
    done
    return 0
}

# What changed since the commit, uncommitted changes first; a header stands for the source of its name.
changed_since() {
    {
        git diff --name-only HEAD
        git log --name-only --format= "$1..HEAD"
    } | sed -E 's/(_p)?\.h$/.cpp/' | awk '!seen[$0]++'
}

# Those among the names on standard input that are compiled and belong to the library or the tool.
sources() {
    local file
    while read -r file; do
        [[ $file =~ ^(algo|chemical_model|common|ml|tools)/.*\.cpp$ ]] || continue
        ! grep -qF "\"file\": \"$PWD/$file\"" build/release/compile_commands.json || echo "$file"
    done
}

check() {
    local findings
    findings=$("$tidy" -p build/release --quiet --warnings-as-errors='*' "$1" 2>&1) || { echo "$findings"; return 1; }
}
export -f check

[ -f build/release/compile_commands.json ] || cmake --preset release > /dev/null
if [ "${1:-}" = --changed ]; then
    commit=$(base)
    [ -n "$commit" ] || { echo "No earlier commit here to compare with: nothing to lint"; exit 0; }
    mapfile -t files < <(changed_since "$commit" | sources)
elif [ $# -gt 0 ]; then
    mapfile -t files < <(printf '%s\n' "$@" | sources)
    limit=${#files[@]}
else
    mapfile -t files < <(git ls-files '*.cpp' | sources)
    limit=${#files[@]}
fi
echo "Linting ${#files[@]} files$([ "${#files[@]}" -le "$limit" ] || echo ", the first $limit")"
printf '%s\n' "${files[@]:0:limit}" | xargs -r -P "$(nproc)" -I{} bash -c 'check "$1"' - {}
