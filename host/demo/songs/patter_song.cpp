#include "host/demo/score/phrase.h"
#include "host/demo/songs/demo_song.h"

namespace orbel::host::demo {

namespace {

const char kCues[] = R"(# 4 Patter Song
format = 1

# The verse comes twice, and each time he stammers: bar 7 three times.
[[repeat]]
from = "5"
to = "9"
passes = 2

[[repeat]]
from = "7"
to = "8"
passes = 3

# He looks for his hat. It may take a while, and he may find it on any beat.
[[vamp]]
from = "13"
to = "15"
exit = "beat"

[[marker]]
at = "9"
name = "Gallop"

[[marker]]
at = "12.4.120"   # half way into the fourth eighth
name = "Where is it?"

[[click]]
from = "1"
to = "2.2"

[[page]]
at = "1"
number = 6

[[page]]
at = "9"
number = 8
)";

void WriteTiming(Score& score) {
  score.Meter(1, 2, 4);
  score.Meter(9, 6, 8);
  score.Meter(13, 2, 4);
  score.Key(0, 0, false);
  score.Tempo(0, 120);
  score.Tempo(score.At(9), 156);
  score.Tempo(score.At(13), 112);
  score.Ramp(score.At(15), score.At(16), 112, 132, 4);
  score.Tempo(score.At(16), 132);
  score.Mark(score.At(5), "Verse");
  score.End(score.At(19));
}

void WriteHarmony(Score& score) {
  Part& guitar = score.Add({"Guitar", Voice::kGuitar, 0, 24, 0.67F, 0.32F, 0.16F});
  Play(guitar, score, score.At(1),
       "-:.5 E4+G4+C5:.5' -:.5 E4+G4+C5:.5' | -:.5 D4+G4+B4:.5' -:.5 D4+G4+B4:.5' | -:.5 E4+G4+C5:.5' -:.5 "
       "E4+A4+C5:.5' | -:.5 D4+F4+B4:.5' -:.5 D4+F4+B4:.3'",
       74);
  Play(guitar, score, score.At(5),
       "-:.5 E4+G4+C5:.5' -:.5 E4+G4+C5:.5' | -:.5 D4+F4+B4:.5' -:.5 D4+F4+B4:.3' -:.2", 74);
  Play(guitar, score, score.At(7),
       "-:.5 D4+F4+B4:.5' -:.5 D4+F4+B4:.3' -:.2 | -:.5 E4+G4+C5:.5' -:.5 D4+F4+B4:.3' -:.2", 74);
  Play(guitar, score, score.At(9),
       "E4+A4+C5:1 -:.5 E4+A4+C5:1 -:.5 | D4+G#4+B4:1 -:.5 D4+G#4+B4:1 -:.5 | E4+A4+C5:1 -:.5 D4+F4+A4:1 "
       "-:.5 | D4+G4+B4:1 -:.5 D4+F4+B4:1'",
       70);
  Play(guitar, score, score.At(15),
       "E4+G4+C5:.5' -:.5 F4+A4+C5:.5' -:.5 | D4+F4+B4:.5' D4+F4+B4:.5' D4+F4+B4:1' | E4+G4+C5:1'>", 80);
  Part& bass = score.Add({"Bass", Voice::kBass, 2, 32, 0.51F, -0.05F, 0.05F});
  Play(bass, score, score.At(1),
       "C2:.8 -:.2 E2:.8 -:.2 | G1:.8 -:.2 B1:.8 -:.2 | C2:.8 -:.2 A1:.8 -:.2 | G1:.8 -:.2 G1:.7 -:.3 | "
       "C2:.8 -:.2 E2:.8 -:.2 | G1:.8 -:.2 B1:.7 -:.3 | G1:.8 -:.2 B1:.7 -:.3 | C2:.8 -:.2 G1:.7 -:.3",
       90);
  Play(bass, score, score.At(9),
       "A1:1.2 -:.3 C2:1.2 -:.3 | E2:1.2 -:.3 G#1:1.2 -:.3 | A1:1.2 -:.3 F1:1.2 -:.3 | G1:1.2 -:.3 G1:1 -:.5 "
       "| C2:.8 -:.2 C2:.7 -:.3 | G1:.8 -:.2 G1:.7 -:.3 | C2:.8 -:.2 F1:.8 -:.2 | G1:.8 -:.2 G1:.8 -:.2 | "
       "C2:1'",
       88);
}

void WriteTune(Score& score) {
  Part& clarinet = score.Add({"Clarinet", Voice::kClarinet, 3, 71, 0.46F, -0.15F, 0.24F});
  Play(clarinet, score, score.At(1), "-:4 | G4:.5' A4:.5' B4:.5' C5:.5' | D5:.5 G4:.5' G4:.5' -:.5", 78);
  Play(clarinet, score, score.At(5),
       "E5:.25 E5:.25 E5:.25 F5:.25 G5:.5' E5:.5' | D5:.25 D5:.25 D5:.25 E5:.25 F5:.5' D5:.4' -:.1 | B4:.25 "
       "C5:.25 B4:.25 C5:.25 D5:.5' G4:.3' -:.2 | C5:.5' E5:.5' D5:.5' G4:.3' -:.2",
       82);
  Part& flute = score.Add({"Flute", Voice::kFlute, 4, 73, 0.44F, 0.15F, 0.28F});
  Play(flute, score, score.At(9),
       "E5:.5 A5:.5 C6:.5 B5:.5 A5:.5 E5:.5 | D5:.5 G#5:.5 B5:.5 A5:.5 G#5:.5 E5:.5 | C5:.5 E5:.5 A5:.5 "
       "F5:.5 A5:.5 D6:.5 | C6:.5 B5:.5 A5:.5 G5:.5 F5:.4 -:.6",
       78);
  Play(clarinet, score, score.At(15),
       "E5:.25 F5:.25 G5:.5' A5:.5' F5:.5' | D5:.25 E5:.25 F5:.5' D5:.25 F5:.25 B4:.5' | C5:1'>", 84);
  Part& bells = score.Add({"Glockenspiel", Voice::kBells, 5, 9, 0.30F, -0.35F, 0.30F});
  Play(bells, score, score.At(17), "C6+E6:1", 66);
}

void WriteDrums(Score& score) {
  Part& drums = score.Add({"Drums", Voice::kDrums, 9, 0, 0.40F, 0.05F, 0.10F});
  for (int bar = 1; bar <= 8; ++bar) {
    Beat(drums, score, score.At(bar), 36, "x.x.", 0.5, 84);
    Beat(drums, score, score.At(bar), 38, ".o.o", 0.5, 64);
  }
  Beat(drums, score, score.At(7), 76, "xxxx", 0.25, 70);
  for (int bar = 9; bar <= 12; ++bar) {
    Beat(drums, score, score.At(bar), 36, "x..x..", 0.5, 82);
    Beat(drums, score, score.At(bar), 42, "xoxxox", 0.5, 58);
  }
  // The search: blocks that walk up and down.
  Beat(drums, score, score.At(13), 76, "x..xx.x.", 0.5, 80);
  Beat(drums, score, score.At(13), 77, ".xx..x..", 0.5, 76);
  Beat(drums, score, score.At(15), 36, "x.x.x.x.X", 0.5, 88);
  Beat(drums, score, score.At(15), 38, ".o.o.oxx.", 0.5, 70);
}

}  // namespace

DemoSong PatterSong() {
  Score score("Patter Song", 480);
  WriteTiming(score);
  WriteHarmony(score);
  WriteTune(score);
  WriteDrums(score);
  const Tick end = score.End();
  return {"4", "Patter Song", std::move(score), 0, end, kCues};
}

}  // namespace orbel::host::demo
