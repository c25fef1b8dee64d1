#!/usr/bin/env bash
# Holds every C++ file against .clang-format. With --fix it rewrites them instead.
set -euo pipefail
cd "$(dirname "$0")/.."
mode=(--dry-run -Werror)
[ "${1:-}" = --fix ] && mode=(-i)
git ls-files -z --cached --others --exclude-standard -- '*.h' '*.cpp' | xargs -0 -r -n 40 -P 2 clang-format "${mode[@]}"
