#!/usr/bin/env bash
# Lines and branches of the engine and its foundation that the tests of the coverage preset reached. Branches that
# only an exception takes on its way through are left out of the count.
set -euo pipefail
cd "$(dirname "$0")/.."
gcovr --root . build/coverage --filter exc/ --filter Sources/ --filter player_core/ --exclude-throw-branches \
  --exclude-unreachable-branches -j 2 --txt build/coverage/coverage.txt --html-details build/coverage/coverage.html \
  --print-summary --fail-under-line 98 --fail-under-branch 90
