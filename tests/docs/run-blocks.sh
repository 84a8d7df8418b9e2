#!/usr/bin/env bash
# run-blocks.sh TOOL_FOLDER WORK_FOLDER: runs every shell block (```sh) of the repository's markdown files as it stands.
# The blocks of one file run one after the other, in one shell and an empty folder of their own that looks like the
# repository's, with the tool on the path. A block is left out where the line before it is <!-- not run: WHY -->, which
# is printed. A block without a language is refused, so that none is missed.
set -euo pipefail
tools=$(realpath "$1")
work=$2
repository=$(realpath "$(dirname "$0")/../..")
export PATH="$tools:$PATH"
rm -rf "$work"
mkdir -p "$work"

# The blocks of a markdown file as one script; what is left out goes to not-run.txt.
script_of() {
    awk -v name="$1" -v leftOut="$work/not-run.txt" '
        /^```/ && !inside {
            inside = 1
            language = substr($0, 4)
            if (language == "") { print "echo " name ":" FNR ": a block without a language; exit 1" }
            taken = language == "sh" && before !~ /^<!-- not run: .* -->$/
            if (language == "sh" && !taken) {
                gsub(/^<!-- not run: | -->$/, "", before)
                print name ":" FNR ": " before >> leftOut
            }
            if (taken) print "echo " name ":" FNR
            next
        }
        /^```$/ { inside = 0 }
        inside && taken { print }
        { before = $0 }
    ' "$repository/$1"
}

cd "$repository"
mapfile -t files < <(git ls-files '*.md')
for file in "${files[@]}"; do
    folder=$work/${file//\//_}
    mkdir -p "$folder"
    script_of "$file" > "$folder.sh"
    [ -s "$folder.sh" ] || continue
    ln -s "$repository"/* "$folder"
    (cd "$folder" && bash -euo pipefail "$folder.sh") || { echo "$file: a block failed; see $folder.sh"; exit 1; }
done
echo "$(wc -l < "$work/not-run.txt") blocks were not run:"
cat "$work/not-run.txt"
