#!/usr/bin/env bash
# Installs the Debian packages that the benchmarks compare with and that nothing else needs: ffmpeg, sox,
# sndfile-convert, rubberband, libsmf, mpv. Does nothing, and asks for no rights, when all are there.
set -euo pipefail

missing=()
for package in ffmpeg sox sndfile-programs rubberband-cli libsmf-dev mpv; do
  status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
  [ "$status" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
echo "Installing what the benchmarks compare with: ${missing[*]}"
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq update
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -y --no-install-recommends install "${missing[@]}"
