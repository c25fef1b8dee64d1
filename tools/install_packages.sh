#!/usr/bin/env bash
# Installs the Debian packages of tools/packages.txt that are missing. Does nothing, and asks for no rights,
# when none is.
set -euo pipefail
cd "$(dirname "$0")"

missing=()
while read -r package _; do
  case "$package" in "" | "#"*) continue ;; esac
  status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
  [ "$status" = installed ] || missing+=("$package")
done <packages.txt
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || {
    echo "These packages are missing, and neither root nor sudo is at hand to install them: ${missing[*]}" >&2
    exit 1
  }
  as_root=(sudo)
fi
echo "Installing what is missing: ${missing[*]}"
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq update
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -y --no-install-recommends install "${missing[@]}"
