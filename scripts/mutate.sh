#!/usr/bin/env bash
# Puts each fault of scripts/mutants.txt, one after the other, into a copy of the last commit, builds the test programs
# concerned and runs them. A mutant that they pass survives: no test would notice that fault.
# Arguments choose mutants, by number (12) or by a part of the file's name (segmentation); none chooses all.
set -euo pipefail
cd "$(dirname "$0")/.."
table=$PWD/scripts/mutants.txt
copy=$PWD/build/mutants
build=$copy/build/release
seconds_per_program=120

# A work tree of its own, kept so that the next run builds little.
prepare() {
    git worktree prune
    [ -e "$copy/.git" ] || git worktree add --quiet --detach "$copy" HEAD
    git -C "$copy" checkout --quiet --force --detach "$(git rev-parse HEAD)"
    (cd "$copy" && cmake --preset release > /dev/null)
}

is_chosen() { # number file choices...
    local number=$1 file=$2
    shift 2
    [ $# -gt 0 ] || return 0
    for choice in "$@"; do
        if [[ $choice == "$number" || ($choice != [0-9]* && $file == *"$choice"*) ]]; then return 0; fi
    done
    return 1
}

# Prints what becomes of the mutant: killed, survived, or why it could not be tried.
verdict() { # file old new programs...
    local file=$1 old=$2 new=$3 text
    shift 3
    text=$(< "$copy/$file") || { echo "no such file"; return; }
    if [[ $text != *"$old"* || ${text#*"$old"} == *"$old"* ]]; then
        echo "text not found once"
        return
    fi
    printf '%s\n' "${text/"$old"/"$new"}" > "$copy/$file"
    if ! cmake --build "$build" --target "$@" > "$build/mutant.log" 2>&1; then
        echo "does not build"
        return
    fi
    for program in "$@"; do
        if ! timeout $seconds_per_program "$build/bin/$program" > "$build/mutant.log" 2>&1; then
            echo "killed"
            return
        fi
    done
    echo "survived"
}

declare -A totals=()
tryMutant() { # choices...
    [ -n "$file" ] || return 0
    number=$((number + 1))
    if is_chosen $number "$file" "$@"; then
        local result
        # shellcheck disable=SC2086 # the programs are words
        result=$(verdict "$file" "$old" "$new" $programs)
        git -C "$copy" checkout --quiet -- .
        totals[$result]=$((${totals[$result]:-0} + 1))
        printf '%3d %-10s %s:%s\n' $number "$result" "$file" "${new%%$'\n'*}"
    fi
    file=
}

prepare
number=0 file='' programs='' old='' new=''
while IFS= read -r line || [ -n "$line" ]; do
    case $line in
        '@ '*)
            tryMutant "$@" < /dev/null
            read -r file programs <<< "${line#@ }"
            old='' new=''
            ;;
        '- '*) old+=${old:+$'\n'}${line#- } ;;
        '+ '*) new+=${new:+$'\n'}${line#+ } ;;
    esac
done < "$table"
tryMutant "$@" < /dev/null

for result in "${!totals[@]}"; do
    echo "${totals[$result]} $result"
done
[ "${totals[killed]:-0}" -eq "$(IFS=+; echo $((${totals[*]:-0})))" ]
