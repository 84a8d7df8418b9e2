#!/usr/bin/env bash
# Checks every include against cmake/layers.txt, the table of who may include whom, and that no sources include each
# other in a circle: X.h, X_p.h and X.cpp count as one.
set -euo pipefail
cd "$(dirname "$0")/.."

edges=$(mktemp)
trap 'rm -f "$edges"' EXIT

git ls-files --cached --others --exclude-standard -- '*.h' '*.cpp' | xargs grep -HoE '^#include "[^"]+"' |
    awk -v edges="$edges" '
    # The row that a path belongs to: the longest one that it begins with.
    function roomOf(path,   best, i) {
        best = ""
        for (i = 1; i <= rows; ++i) {
            if (index(path, row[i]) == 1 && length(row[i]) > length(best)) best = row[i]
        }
        return best
    }
    function covers(name, room) { return name == room || index(room, name "/") == 1 }
    function exists(path,   line, found) {
        found = (getline line < path) >= 0
        close(path)
        return found
    }
    function unitOf(path) {
        sub(/\.(h|cpp)$/, "", path)
        sub(/_p$/, "", path)
        return path
    }
    function fail(text) { print text; failed = 1 }

    FILENAME == "cmake/layers.txt" {
        sub(/#.*/, "")
        if (NF == 0) next
        if ($1 == "library") { librarySize = rows; next }
        row[++rows] = $1
        for (i = 2; i <= NF; ++i) {
            if ($i == "library") {
                for (j = 1; j <= librarySize; ++j) allowed[$1, row[j]] = 1
                continue
            }
            known = 0
            for (j = 1; j < rows; ++j) {
                if (covers($i, row[j])) { allowed[$1, row[j]] = 1; known = 1 }
            }
            if (!known) fail("cmake/layers.txt: " $1 " names " $i ", which does not stand above it")
        }
        next
    }
    {
        split($0, part, /:#include "|"/)
        file = part[1]
        wanted = part[2]
        if (wanted ~ /^moc_/) next
        target = exists(wanted) ? wanted : "algo/src/" wanted
        if (!exists(target)) { fail(file ": \"" wanted "\" is not written from the root or from algo/src"); next }
        from = roomOf(file)
        to = roomOf(target)
        if (from == "") { fail(file " belongs to no row of cmake/layers.txt"); next }
        if (from != to && !((from, to) in allowed)) fail(file " (" from ") must not include " target " (" to ")")
        if (unitOf(file) != unitOf(target)) print unitOf(file), unitOf(target) > edges
    }
    END { exit failed }
    ' cmake/layers.txt -

tsort "$edges" > /dev/null
