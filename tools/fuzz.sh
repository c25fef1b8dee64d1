#!/usr/bin/env bash
# Lets libFuzzer throw bytes at every target, each for some seconds, beginning with the seeds of fuzz/corpus.
#
# usage: fuzz.sh [SECONDS [TARGET...]]
#
# What grows of the seeds stays in build/fuzz/corpus, what breaks a promise in build/fuzz/found. Ends with status 1
# when something did. Keep such an input in fuzz/crashes/TARGET, named by what it broke, when that is mended.
set -uo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
targets=("${@:2}")
[ ${#targets[@]} -gt 0 ] || targets=(smf cues positions audio script planner)
build=build/fuzz
status=0
export UBSAN_OPTIONS=print_stacktrace=1
for target in "${targets[@]}"; do
  mkdir -p "$build/corpus/$target" "$build/found"
  options=(-max_total_time="$seconds" -timeout=30 -rss_limit_mb=4096 -print_final_stats=1)
  # A player's threads and files make the planner slow; its songs fit into a few hundred bytes.
  [ "$target" = planner ] && options+=(-max_len=600)
  log="$build/found/$target.log"
  if "$build/fuzz/fuzz_$target" "${options[@]}" -artifact_prefix="$build/found/$target-" "$build/corpus/$target" \
      "fuzz/corpus/$target" $([ -d "fuzz/crashes/$target" ] && echo "fuzz/crashes/$target") >"$log" 2>&1; then
    echo "$target: $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") executions, nothing found"
  else
    echo "$target: something was found:"
    grep -E 'broken promise|ERROR|runtime error|Test unit written|SUMMARY' "$log"
    status=1
  fi
done
exit $status
