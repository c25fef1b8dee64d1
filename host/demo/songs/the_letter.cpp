#include "host/demo/score/phrase.h"
#include "host/demo/songs/demo_song.h"

namespace orbel::host::demo {

namespace {

const char kCues[] = R"(# 3 The Letter
format = 1

# Stop before the second verse: she opens the envelope. "go" when she breathes in.
[[caesura]]
at = "5"

# Bar 7 was cut in rehearsal: from bar 6 straight to the change of key.
[[cut]]
from = "7"
to = "8"

[[marker]]
at = "5"
name = "Opens the letter"

[[marker]]
at = { tick = 28800 }   # beat 3 of bar 8, counted in ticks: 960 make a quarter note
name = "Up a tone"

[[page]]
at = "1"
number = 9

[[page]]
at = "5"
number = 10

# A slower second verse for the understudy, and a tone lower. Take the marks away to
# use them; each holds until the next one of its kind, or to the end of the song.
#
# [[tempo]]
# at = "5"
# scale = 0.95          # 1.0 is as recorded, 0.25 to 4.0
#
# [[transpose]]
# at = "5"
# semitones = -2        # 0 is as recorded, -24 to 24
)";

void WriteTiming(Score& score) {
  score.Meter(1, 4, 4);
  score.Key(0, 1, false);
  score.Tempo(0, 76);
  // The first verse slows down into its fermata, the second starts where the first did.
  score.Ramp(score.At(3, 2), score.At(5), 76, 46, 12);
  score.Tempo(score.At(5), 76);
  score.Ramp(score.At(9), score.At(11), 76, 44, 16);
  score.Key(score.At(9), 3, false);
  score.Mark(score.At(1), "First verse");
  score.Mark(score.At(5), "Second verse");
  score.End(score.At(11));
}

void WriteHarmony(Score& score) {
  Part& guitar = score.Add({"Guitar", Voice::kGuitar, 0, 24, 0.74F, -0.28F, 0.28F});
  const char tonic[] = "G2:.5 D3:.5 G3:.5 B3:.5 D4:.5 B3:.5 G3:.5 D3:.5";
  const char minor[] = "E2:.5 B2:.5 G3:.5 B3:.5 E4:.5 B3:.5 G3:.5 B2:.5";
  const char fourth[] = "C3:.5 G3:.5 C4:.5 E4:.5 G4:.5 E4:.5 C4:.5 G3:.5";
  Play(guitar, score, score.At(1), tonic, 74);
  Play(guitar, score, score.At(2), minor, 72);
  Play(guitar, score, score.At(3), fourth, 74);
  Play(guitar, score, score.At(4), "D3:.5 A3:.5 D4:.5 F#4:.5 D3+A3+D4+F#4:.9", 70);
  Play(guitar, score, score.At(5), tonic, 76);
  Play(guitar, score, score.At(6), "E2:.5 B2:.5 G3:.5 B3:.5 E4:.5 B3:.5 G3:.4 -:.6", 74);
  Play(guitar, score, score.At(7), "C3:.5 G3:.5 C4:.5 E4:.5 D3:.5 A3:.5 D4:.4 -:.6", 72);
  Play(guitar, score, score.At(8), "E2:.5 B2:.5 E3:.5 A3:.5 E2:.5 B2:.5 E3:.5 G#3:.5", 78);
  Play(guitar, score, score.At(9), "A2:.5 E3:.5 A3:.5 C#4:.5 D3:.5 A3:.5 D4:.5 F#4:.5 | A2+E3+A3+C#4+E4:3.2",
       76);
  Part& strings = score.Add({"Strings", Voice::kStrings, 1, 48, 0.41F, 0.22F, 0.50F});
  Play(strings, score, score.At(5), "G3+B3+D4:4_ | G3+B3+E4:3.2 -:.8 | G3+C4+E4:2_ F#3+A3+D4:1.2 -:.8", 58);
  Play(strings, score, score.At(8), "E3+A3+B3:2_ E3+G#3+B3:2_ | E3+A3+C#4:2_ F#3+A3+D4:2_ | E3+A3+C#4:3<",
       66);
}

void WriteTune(Score& score) {
  Part& clarinet = score.Add({"Clarinet", Voice::kClarinet, 3, 71, 0.46F, 0.10F, 0.42F});
  Play(clarinet, score, score.At(1),
       "-:1 D5:1 B4:.5 A4:.5 G4:1 | -:1 B4:1 G4:.5 F#4:.5 E4:1 | -:1 E4:.5 G4:.5 C5:1.5_ B4:.5 | A4:1 D5:1.8",
       80);
  Play(clarinet, score, score.At(5),
       "-:1 D5:1 B4:.5 A4:.5 G4:1 | -:1 B4:1 E5:1.2 -:.8 | E5:1 C5:1 D5:1.2 -:.8 | B4:1 E5:1 D5:.5 C#5:.5 "
       "B4:1 | C#5:1.5_ E5:.5 D5:1 B4:1 | A4:3",
       84);
  Part& bells = score.Add({"Glockenspiel", Voice::kBells, 4, 9, 0.21F, -0.35F, 0.60F});
  Play(bells, score, score.At(5), "D6:1 -:1 B5:1 -:1 | E6:1", 56);
  Play(bells, score, score.At(9), "C#6:1 E6:1 F#6:1 D6:1 | A6:1", 58);
}

}  // namespace

DemoSong TheLetter() {
  Score score("The Letter", 960);
  WriteTiming(score);
  WriteHarmony(score);
  WriteTune(score);
  const Tick end = score.End();
  return {"3", "The Letter", std::move(score), 0, end, kCues};
}

}  // namespace orbel::host::demo
