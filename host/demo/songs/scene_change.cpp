#include "host/demo/score/phrase.h"
#include "host/demo/songs/demo_song.h"

namespace orbel::host::demo {

namespace {

const char kCues[] = R"(# 2a Scene Change
format = 1

# Underscore while the street becomes a kitchen. "go" leaves the passage at the next
# bar line and goes on behind it, so nobody waits for more than a bar.
[[vamp]]
from = "3"
to = "5"
exit = "bar"

[[marker]]
at = "3"
name = "Until the table stands"

[[page]]
at = "1"
number = 5
)";

void WriteTiming(Score& score) {
  score.Meter(1, 4, 4);
  score.Key(0, 0, true);
  score.Tempo(0, 96);
  score.Ramp(score.At(6), score.At(7), 96, 78, 4);
  score.Mark(score.At(5), "Lights");
  score.End(score.At(7));
}

void WriteHarmony(Score& score) {
  Part& piano = score.Add({"Electric Piano", Voice::kElectricPiano, 0, 4, 0.40F, -0.15F, 0.30F});
  const char minor[] = "A3:.5_ E4:.5_ G4:.5_ C5:.5_ B4:.5_ G4:.5_ E4:.5_ C4:.4";
  const char major[] = "F3:.5_ C4:.5_ E4:.5_ A4:.5_ G4:.5_ E4:.5_ C4:.5_ A3:.4";
  for (const int bar : {1, 3}) {
    Play(piano, score, score.At(bar), minor, 70);
    Play(piano, score, score.At(bar + 1), major, 66);
  }
  Play(piano, score, score.At(5), "D3:.5_ A3:.5_ C4:.5_ F4:.5_ E4:.5_ C4:.5_ A3:.5_ F3:.5_", 66);
  Play(piano, score, score.At(6), "E3+A3+B3+D4:2 E3+G#3+B3+D4:1.4", 62);
  Part& bass = score.Add({"Bass", Voice::kBass, 2, 32, 0.48F, 0.0F, 0.08F});
  Play(bass, score, score.At(1),
       "A1:2.5 E2:1 -:.5 | F1:2.5 C2:1 -:.5 | A1:2.5 E2:1 -:.5 | F1:2.5 C2:1 -:.5 | D2:2.5 A1:1.5 | E2:3.4",
       80);
}

void WriteColours(Score& score) {
  Part& strings = score.Add({"Strings", Voice::kStrings, 1, 48, 0.38F, 0.30F, 0.45F});
  Play(strings, score, score.At(5), "F4+A4+C5:4_ | E4+A4+B4:2_ E4+G#4+B4:1.3", 58);
  Part& flute = score.Add({"Flute", Voice::kFlute, 3, 73, 0.34F, 0.20F, 0.45F});
  Play(flute, score, score.At(3, 1), "E5:1.5_ D5:.5 B4:.8 -:1.2 C5:1.5_ A4:.8", 66);
  Part& drums = score.Add({"Drums", Voice::kDrums, 9, 0, 0.80F, -0.1F, 0.20F});
  for (int bar = 1; bar <= 5; ++bar) {
    Beat(drums, score, score.At(bar), 70, "x.o.x.o.x.o.x.o.", 0.25, 60);
    Beat(drums, score, score.At(bar), 40, "....x.......x...", 0.25, 62);
  }
}

}  // namespace

DemoSong SceneChange() {
  Score score("Scene Change", 480);
  WriteTiming(score);
  WriteHarmony(score);
  WriteColours(score);
  const Tick end = score.End();
  return {"2a", "Scene Change", std::move(score), 0, end, kCues};
}

}  // namespace orbel::host::demo
