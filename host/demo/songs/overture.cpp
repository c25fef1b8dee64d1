#include "host/demo/score/phrase.h"
#include "host/demo/songs/demo_song.h"

namespace orbel::host::demo {

namespace {

const char kCues[] = R"(# 1 Overture
format = 1

# The click helps the band in; it is over before the tune begins.
[[click]]
from = "1"
to = "3"

[[marker]]
at = "3"
name = "Tune"

[[marker]]
at = "7"
name = "In three"

[[page]]
at = "1"
number = 1

[[page]]
at = "6.3"      # turn while the tune holds its breath
number = 2

# The song ends here and waits; "go" lets the evening continue.
[[caesura]]
at = "end"
)";

void WriteTiming(Score& score) {
  score.Meter(1, 4, 4);
  score.Meter(7, 3, 4);
  score.Meter(9, 4, 4);
  score.Key(0, 2, false);
  score.Tempo(0, 116);
  // The ritardando into the last chord: sixteen small steps.
  score.Ramp(score.At(8), score.At(10), 116, 72, 16);
  score.Tempo(score.At(10), 80);
  score.Mark(score.At(1), "Intro");
  score.Mark(score.At(10), "Last chord");
  score.End(score.At(11));
}

void WriteHarmony(Score& score) {
  Part& strings = score.Add({"Strings", Voice::kStrings, 0, 48, 0.43F, -0.25F, 0.40F});
  Play(strings, score, score.At(3),
       "F#3+A3+D4:4_ | E3+A3+C#4:4_ | D3+F#3+B3:4_ | D3+G3+B3:4_ | D3+G3+B3:3_ | E3+G3+C#4:3_ | D3+F#3+B3:2_ "
       "E3+G3+B3:1_ E3+G3+C#4:1_ | F#3+A3+D4:2.5<",
       66);
  Part& piano = score.Add({"Electric Piano", Voice::kElectricPiano, 1, 4, 0.34F, 0.30F, 0.22F});
  Play(piano, score, score.At(1),
       "D4+F#4:.5' A4:.5 D4+F#4:.5' A4:.5 D4+G4:.5' B4:.5 D4+G4:.5' B4:.5 | D4+F#4:.5' A4:.5 D4+F#4:.5' "
       "A4:.5 C#4+G4:.5' A4:.5 E4+A4:1'",
       74);
  Play(piano, score, score.At(3),
       "-:.5 F#4+A4:.5' -:.5 F#4+A4:.5' -:.5 F#4+A4:.5' F#4+A4:1' | -:.5 E4+A4:.5' -:.5 E4+A4:.5' -:.5 "
       "E4+A4:.5' E4+A4:1' | -:.5 D4+F#4:.5' -:.5 D4+F#4:.5' -:.5 D4+F#4:.5' D4+F#4:1' | -:.5 D4+G4:.5' -:.5 "
       "D4+G4:.5' -:.5 E4+G4:.5' E4+G4:1' | -:1 D4+G4:.5' -:.5 D4+G4:.5' -:.5 | -:1 E4+G4:.5' -:.5 E4+G4:.5' "
       "-:.5",
       62);
  Part& bass = score.Add({"Bass", Voice::kBass, 2, 32, 0.53F, 0.0F, 0.06F});
  Play(bass, score, score.At(1), "D2:1.5 D2:.5 G2:2 | D2:1.5 D2:.5 A2:1 A1:1'", 88);
  Play(bass, score, score.At(3),
       "D2:1.5 D2:.5 A2:1 F#2:1 | C#2:1.5 C#2:.5 A2:1 C#2:1 | B1:1.5 B1:.5 F#2:1 B1:1 | G2:1.5 G2:.5 A2:1 "
       "A1:1 | G2:3 | A1:3 | B1:2 E2:1 A1:1 | D2:2.5",
       92);
}

void WriteTune(Score& score) {
  Part& flute = score.Add({"Flute", Voice::kFlute, 3, 73, 0.50F, 0.12F, 0.35F});
  Play(flute, score, score.At(3),
       "F#5:1 E5:.5 D5:.5 A5:1.5_ F#5:.5 | E5:1.5_ C#5:.5 E5:2 | D5:1 F#5:1 B5:1.5_ A5:.5 | G5:1 F#5:.5 "
       "E5:.5 B4:1 C#5:1 | D5:1 E5:1 F#5:1 | G5:1 E5:1 C#5:1 | F#5:2 E5:1 C#5:1 | D5:2.5",
       86);
  Part& bells = score.Add({"Glockenspiel", Voice::kBells, 4, 9, 0.30F, -0.40F, 0.45F});
  Play(
      bells, score, score.At(3),
      "F#6:1 -:1 A6:2 | E6:1.5 -:.5 E6:2 | D6:1 F#6:1 B6:2 | G6:2 B5:1 C#6:1 | D6:3 | G6:3 | F#6:4 | D6+A6:1",
      64);
}

void WriteDrums(Score& score) {
  Part& drums = score.Add({"Drums", Voice::kDrums, 9, 0, 0.42F, 0.05F, 0.12F});
  for (int bar = 1; bar <= 6; ++bar) {
    Beat(drums, score, score.At(bar), 42, "x.o.x.o.x.o.x.o.", 0.25, 62);
    if (bar < 3) continue;
    Beat(drums, score, score.At(bar), 36, "x.....x.x.......", 0.25, 96);
    Beat(drums, score, score.At(bar), 38, "....x.......x..o", 0.25, 66);
  }
  Beat(drums, score, score.At(2, 3), 38, "oxxX", 0.25, 70);
  Beat(drums, score, score.At(7), 36, "x..x..", 1, 84);
  Beat(drums, score, score.At(7), 42, ".xx.xx", 1, 54);
  Beat(drums, score, score.At(10), 36, "x", 1, 92);
  Beat(drums, score, score.At(10), 49, "o", 1, 70);
}

}  // namespace

DemoSong Overture() {
  Score score("Overture", 480);
  WriteTiming(score);
  WriteHarmony(score);
  WriteTune(score);
  WriteDrums(score);
  const Tick end = score.End();
  return {"1", "Overture", std::move(score), 0, end, kCues};
}

}  // namespace orbel::host::demo
