#!/usr/bin/env bash
# Lets clang read every source with the flags of the release build, which is g++'s: what one compiler warns of, the
# other may not. Code is not generated. Needs a release build, for the sources that Qt's tools make.
set -euo pipefail
cd "$(dirname "$0")/../build/release"
clang=$(command -v clang++-14 || command -v clang++)
echo "Reading $(grep -c '"command":' compile_commands.json) sources with $clang"
# A line of the file is  "command": "/usr/bin/c++ FLAGS -o OBJECT -c SOURCE",  with \" and \\ inside.
sed -nE 's/^ *"command": "(.*)",?$/\1/p' compile_commands.json |
    sed -E -e 's/\\(.)/\1/g' -e "s#^([^ ]*ccache )?[^ ]+ #$clang #; s# -o [^ ]+ -c # -fsyntax-only -Wno-unknown-warning-option #" |
    xargs -d '\n' -P "$(nproc)" -I{} bash -c '{}'
