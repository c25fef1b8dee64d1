#!/usr/bin/env bash
# Branches of the readers (MIDI files, TOML, positions, a show's folder) that their own tests take: all of them, or it
# fails and says which are missing. Branches as they stand in the source: an exception on its way is none.
set -euo pipefail
cd "$(dirname "$0")/../build/reader-coverage"
root=$(cd ../.. && pwd)
status=0

# count NAME PROGRAM SOURCES: SOURCES is how the paths of the reader's sources begin.
count() {
  LLVM_PROFILE_FILE=$1.profraw "$2" --gtest_brief=1 > "$1.txt" || { cat "$1.txt"; exit 1; }
  llvm-profdata merge -o "$1.profdata" "$1.profraw"
  llvm-cov export -format=lcov -instr-profile="$1.profdata" "$2" > "$1.lcov"
  awk -F '[:,]' -v reader="$1" -v sources="^$3" -v root="$root/" '
    /^SF:/ { file = $2; sub(/.*\.\.\//, "", file); sub("^" root, "", file); counts = file ~ sources }
    /^BRDA:/ && counts { ++branches; if ($5 == "0" || $5 == "-") { ++missing; print file ":" $2 ": a branch is not taken" } }
    END {
      printf "%-20s %3d of %3d branches\n", reader, branches - missing, branches
      exit branches == 0 || missing != 0
    }' "$1.lcov" || status=1
}

for reader in standard_midi_file toml timeline show_folder; do
  count $reader tests/reference_suite/midi/$reader/${reader}_test reference_suite/midi/$reader/
done
count song_clock tests/host/song_clock_test host/session/song_clock
exit $status
