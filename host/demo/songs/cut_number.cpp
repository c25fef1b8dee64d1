#include "host/demo/score/phrase.h"
#include "host/demo/songs/demo_song.h"

namespace orbel::host::demo {

namespace {

const char kCues[] = R"(# 5 Cut Number
# Out of the show since the second preview, but kept: it can still be called up by its
# number. A skipped song is not held ready in memory.
format = 1
skip = true

[[marker]]
at = "3"
name = "Bridge"
)";

}  // namespace

DemoSong CutNumber() {
  Score score("Cut Number", 480);
  score.Meter(1, 4, 4);
  score.Key(0, -1, false);
  score.Tempo(0, 104);
  score.Ramp(score.At(4, 2), score.At(5), 104, 80, 6);
  score.End(score.At(6));
  Part& accordion = score.Add({"Accordion", Voice::kAccordion, 0, 21, 0.72F, -0.2F, 0.30F});
  Play(accordion, score, score.At(1),
       "A4:1 G4:.5 F4:.5 C5:2 | Bb4:1 A4:.5 G4:.5 D5:2 | C5:1 Bb4:.5 A4:.5 G4:1 Bb4:1 | A4:1.5_ F4:.5 G4:1 "
       "E4:1 | F4:2.5",
       80);
  Part& guitar = score.Add({"Guitar", Voice::kGuitar, 1, 24, 0.70F, 0.25F, 0.22F});
  Play(guitar, score, score.At(1),
       "F3:.5 A3:.5 C4:.5 A3:.5 F3:.5 A3:.5 C4:.5 A3:.5 | G3:.5 Bb3:.5 D4:.5 Bb3:.5 G3:.5 Bb3:.5 D4:.5 "
       "Bb3:.5 | C3:.5 G3:.5 Bb3:.5 E4:.5 C3:.5 G3:.5 Bb3:.5 E4:.5 | F3:.5 A3:.5 C4:.5 A3:.5 C3:.5 G3:.5 "
       "Bb3:.5 E4:.5 | F3+A3+C4+F4:3",
       70);
  Part& bass = score.Add({"Bass", Voice::kBass, 2, 32, 0.48F, 0.0F, 0.06F});
  Play(bass, score, score.At(1), "F1:2 C2:2 | G1:2 D2:2 | C2:2 E2:2 | F1:2 C2:2 | F1:3", 84);
  const Tick end = score.End();
  return {"5", "Cut Number", std::move(score), 0, end, kCues};
}

}  // namespace orbel::host::demo
