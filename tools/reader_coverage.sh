#!/usr/bin/env bash
# Branches of the readers (MIDI files, TOML, positions, a show's folder) that their own tests take: all of them, or it
# fails and says which are missing. Branches as they stand in the source: an exception on its way is none.
set -euo pipefail
cd "$(dirname "$0")/../build/reader-coverage"
root=$(cd ../.. && pwd)
status=0

# count NAME SOURCES PROGRAM...: SOURCES is how the paths of the reader's sources begin.
count() {
  local name=$1 sources=$2 profiles=() objects=()
  for program in "${@:3}"; do
    LLVM_PROFILE_FILE=$program.profraw "$program" --gtest_brief=1 > "$name.txt" || { cat "$name.txt"; exit 1; }
    profiles+=("$program.profraw")
    objects+=(-object "$program")
  done
  llvm-profdata merge -o "$name.profdata" "${profiles[@]}"
  llvm-cov export -format=lcov -instr-profile="$name.profdata" "${objects[@]}" > "$name.lcov"
  awk -F '[:,]' -v reader="$name" -v sources="^$sources" -v root="$root/" '
    /^SF:/ { file = $2; sub(/.*\.\.\//, "", file); sub("^" root, "", file); counts = file ~ sources }
    /^BRDA:/ && counts { ++branches; if ($5 == "0" || $5 == "-") { ++missing; print file ":" $2 ": a branch is not taken" } }
    END {
      printf "%-20s %3d of %3d branches\n", reader, branches - missing, branches
      exit branches == 0 || missing != 0
    }' "$name.lcov" || status=1
}

midi=reference_suite/midi
for reader in standard_midi_file toml timeline; do
  count $reader $midi/$reader/ tests/$midi/$reader/${reader}_test
done
count show_folder $midi/show_folder/ tests/$midi/show_folder/show_folder_test tests/$midi/show_folder/show_out_of_memory_test
count song_clock host/session/song_clock tests/host/song_clock_test
exit $status
