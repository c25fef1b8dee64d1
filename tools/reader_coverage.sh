#!/usr/bin/env bash
# Branches of the readers (MIDI files, TOML, positions, a show's folder) that their own tests take: all of them, or it
# fails and says which are missing. Branches as they stand in the source: an exception on its way is none.
set -euo pipefail
cd "$(dirname "$0")/../build/reader-coverage"
status=0
for reader in standard_midi_file toml timeline show_folder; do
  program=tests/reference_suite/midi/$reader/${reader}_test
  LLVM_PROFILE_FILE=$reader.profraw "$program" --gtest_brief=1 > "$reader.txt" || { cat "$reader.txt"; exit 1; }
  llvm-profdata merge -o "$reader.profdata" "$reader.profraw"
  llvm-cov export -format=lcov -instr-profile="$reader.profdata" "$program" > "$reader.lcov"
  awk -F '[:,]' -v reader="$reader" '
    /^SF:/ { file = $2; sub(/.*\.\.\//, "", file); counts = file ~ "^reference_suite/midi/" reader "/" }
    /^BRDA:/ && counts { ++branches; if ($5 == "0" || $5 == "-") { ++missing; print file ":" $2 ": a branch is not taken" } }
    END {
      printf "%-20s %3d of %3d branches\n", reader, branches - missing, branches
      exit branches == 0 || missing != 0
    }' "$reader.lcov" || status=1
done
exit $status
