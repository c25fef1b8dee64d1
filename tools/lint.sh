#!/usr/bin/env bash
# clang-tidy on every source of the product. Needs the compile commands of the clang preset.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files -z -- 'exc/*.cpp' 'Sources/*.cpp' 'player_core/*.cpp' 'reference_suite/*.cpp' 'host/*.cpp' |
  xargs -0 -r -n 1 -P 2 clang-tidy -p build/clang --quiet
