#!/usr/bin/env bash
# Runs one step of a check list and says how long it took: step.sh NAME COMMAND...
set -uo pipefail
name=$1
shift
printf '== %s\n' "$name"
start=$SECONDS
"$@"
status=$?
printf '== %s: %s after %d s\n' "$name" "$([ $status -eq 0 ] && echo done || echo "failed with status $status")" \
  $((SECONDS - start))
exit $status
