#include "host/demo/score/phrase.h"
#include "host/demo/songs/demo_song.h"

namespace orbel::host::demo {

namespace {

const char kCues[] = R"(# 2 Street Waltz
format = 1
first_bar = 0     # the tune starts with an upbeat, bar 0
attacca = true    # straight on into the scene change

# The dancers come on: round and round until they are in place. "go" lets the band
# play to the end of the passage and on.
[[vamp]]
from = "5"
to = "9"
exit = "end"

# Two bars in hand, should the lift take longer: played once, and once more for
# every time that it is asked for before bar 15.
[[safety]]
from = "13"
to = "15"

[[marker]]
at = "5"
name = "Dancers on"

[[marker]]
at = "13.3"       # where the hand goes up
name = "Lift"

[[page]]
at = "0"
number = 3

[[page]]
at = "9"
number = 4
)";

void WriteTiming(Score& score) {
  score.Meter(0, 1, 4);
  score.Meter(1, 3, 4);
  score.Key(0, 0, true);
  score.Tempo(0, 152);
  score.Mark(score.At(1), "Waltz");
  score.End(score.At(19));
}

// One bar of oom-pah-pah on each chord, in eighteen bars.
void WriteHarmony(Score& score) {
  Part& bass = score.Add({"Bass", Voice::kBass, 2, 32, 0.51F, -0.05F, 0.06F});
  Play(bass, score, score.At(1),
       "A1:1.3 -:1.7 | E2:1.3 -:1.7 | A1:1.3 -:1.7 | E2:1.3 -:1.7 | A1:1.3 -:1.7 | D2:1.3 -:1.7 | B1:1.3 "
       "-:1.7 | E2:1.3 -:1.7 | A1:1.3 -:1.7 | D2:1.3 -:1.7 | A1:1.3 -:1.7 | E2:1.3 -:1.7 | F1:1.3 -:1.7 | "
       "E2:1.3 -:1.7 | A1:1.3 -:1.7 | D2:1.3 -:1.7 | E2:1 E2:1 G#1:1 | A1:1' -:2",
       90);
  Part& guitar = score.Add({"Guitar", Voice::kGuitar, 1, 24, 0.64F, 0.38F, 0.20F});
  Play(guitar, score, score.At(1),
       "-:1 C4+E4+A4:1' C4+E4+A4:1' | -:1 D4+E4+G#4:1' D4+E4+G#4:1' | -:1 C4+E4+A4:1' C4+E4+A4:1' | -:1 "
       "D4+E4+G#4:1' D4+E4+G#4:1' | -:1 C4+E4+A4:1' C4+E4+A4:1' | -:1 D4+F4+A4:1' D4+F4+A4:1' | -:1 "
       "D4+F4+B4:1' D4+F4+B4:1' | -:1 D4+E4+G#4:1' D4+E4+G#4:1'",
       72);
  Play(guitar, score, score.At(9),
       "-:1 C4+E4+A4:1' C4+E4+A4:1' | -:1 D4+F4+A4:1' D4+F4+A4:1' | -:1 C4+E4+A4:1' C4+E4+A4:1' | -:1 "
       "D4+E4+G#4:1' D4+E4+G#4:1' | -:1 C4+F4+A4:1' C4+F4+A4:1' | -:1 D4+E4+G#4:1' D4+E4+G#4:1' | -:1 "
       "C4+E4+A4:1' C4+E4+A4:1' | -:1 D4+F4+A4:1' D4+F4+A4:1' | D4+E4+G#4:1' D4+E4+G#4:1' D4+E4+G#4:1' | "
       "A3+C4+E4+A4:1'",
       72);
}

void WriteTune(Score& score) {
  Part& accordion = score.Add({"Accordion", Voice::kAccordion, 0, 21, 0.90F, -0.22F, 0.30F});
  Play(accordion, score, score.At(0),
       "E4:1 | C5:2 B4:.5 A4:.5 | G#4:2 B4:.5 D5:.5 | C5:1 E5:1 A4:1 | B4:1.5 E4:.8' -:.7", 84);
  // The vamp: four bars that end where the bar before them ended.
  Play(accordion, score, score.At(5),
       "C5:1 E5:1 A5:1 | F5:1.5_ E5:.5 D5:1 | B4:1 D5:1 F5:1 | E5:1.5 E4:.8' -:.7", 82);
  Play(accordion, score, score.At(9),
       "E5:2_ C5:1 | D5:1 F5:1 A5:1 | C5:1.5_ B4:.5 A4:1 | G#4:1.5 E4:.8' -:.7 | A4:1 C5:1 F5:1 | E5:1.5 "
       "E4:.8' -:.7 | C5:1 B4:1 A4:1 | D5:1 C5:.5 B4:.5 A4:1 | G#4:1 B4:1 E5:1 | A4+C5+A5:1'>",
       86);
  Part& clarinet = score.Add({"Clarinet", Voice::kClarinet, 3, 71, 0.28F, 0.18F, 0.35F});
  Play(clarinet, score, score.At(9),
       "C5:3 | A4:3 | E4:3 | D4:1.5 E4:.8' -:.7 | F4:3 | D4:1.5 E4:.8' -:.7 | E4:3 | F4:3 | E4:3 | E4:1'",
       68);
}

void WriteDrums(Score& score) {
  Part& drums = score.Add({"Drums", Voice::kDrums, 9, 0, 0.50F, 0.0F, 0.12F});
  for (int bar = 1; bar <= 16; ++bar) {
    Beat(drums, score, score.At(bar), 36, "x..", 1, 72);
    Beat(drums, score, score.At(bar), 40, ".xx", 1, 70);
    if (bar % 4 == 0) Beat(drums, score, score.At(bar), 54, "..x", 1, 66);
  }
  Beat(drums, score, score.At(17), 38, "xox.", 0.75, 60);
  Beat(drums, score, score.At(18), 36, "X", 1, 96);
  Beat(drums, score, score.At(18), 54, "X", 1, 80);
}

}  // namespace

DemoSong StreetWaltz() {
  Score score("Street Waltz", 480);
  WriteTiming(score);
  WriteHarmony(score);
  WriteTune(score);
  WriteDrums(score);
  const Tick end = score.End();
  return {"2", "Street Waltz", std::move(score), 0, end, kCues};
}

}  // namespace orbel::host::demo
