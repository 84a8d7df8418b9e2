#!/usr/bin/env bash
# Installs the packages of scripts/packages.txt that are missing. Works as root and with sudo.
set -euo pipefail
cd "$(dirname "$0")/.."

missing=()
while read -r package; do
    status=$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null || true)
    [ "$status" = 'install ok installed' ] || missing+=("$package")
done < <(grep -vE '^\s*(#|$)' scripts/packages.txt)
[ "${#missing[@]}" -gt 0 ] || exit 0

as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
echo "Installing ${missing[*]}"
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
