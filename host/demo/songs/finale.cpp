#include "host/demo/score/phrase.h"
#include "host/demo/songs/demo_song.h"

namespace orbel::host::demo {

namespace {

const char kCues[] = R"(# 10 Finale
format = 1

# Bar 1 of the score counts the orchestra in and was never recorded; the recording
# ends with bar 12, and the empty bar behind it belongs to the score only.
audio_start = "2"
audio_end = "13"

# The bows: twice through.
[[repeat]]
from = "4"
to = "6"

[[click]]
from = "2"
to = "2.3"

[[marker]]
at = "4"
name = "Bows"

[[marker]]
at = "10"
name = "Everybody"

[[page]]
at = "2"
number = 11

[[page]]
at = "8.2"
number = 12
)";

void WriteTiming(Score& score) {
  score.Meter(1, 4, 4);
  score.Meter(7, 5, 4);
  score.Meter(8, 4, 4);
  score.Key(0, 2, false);
  score.Tempo(0, 126);
  score.Tempo(score.At(6), 132);
  score.Ramp(score.At(10), score.At(12), 132, 70, 20);
  score.Tempo(score.At(12), 84);
  score.Mark(score.At(1), "Count-in");
  score.Mark(score.At(7), "Five");
  score.End(score.At(14));
}

void WriteHarmony(Score& score) {
  Part& piano = score.Add({"Electric Piano", Voice::kElectricPiano, 1, 4, 0.32F, 0.30F, 0.20F});
  Part& guitar = score.Add({"Guitar", Voice::kGuitar, 5, 24, 0.48F, -0.40F, 0.18F});
  const char introduction[] = "D4+F#4+A4:.5' D4+F#4+A4:1 E4+G4+A4:.5' -:.5 E4+G4+A4:.5' E4+G4+C#5:1'";
  for (const int bar : {2, 3}) {
    Play(piano, score, score.At(bar), introduction, 78);
    Play(guitar, score, score.At(bar), introduction, 70);
  }
  // The bows end, as the bar before them did, on the dominant.
  const char bows[] =
      "F#4+A4:.5' F#4+A4:1 F#4+A4:.5' G4+B4:.5' G4+B4:1 G4+B4:.5' | F#4+A4:.5' F#4+A4:1 F#4+A4:.5' -:.5 "
      "E4+G4:.5' E4+G4+C#5:1'";
  Play(piano, score, score.At(4), bows, 76);
  Play(guitar, score, score.At(4), bows, 68);
  const char rest[] =
      "F#4+A4:.5' F#4+A4:1 F#4+A4:.5' E4+A4:.5' E4+A4:1 E4+A4:.5' | D4+F#4:1' D4+F#4:1' D4+F#4:1' E4+G4:1' "
      "E4+G4:1' | F#4+A4:.5' F#4+A4:1 F#4+A4:.5' G4+B4:.5' G4+B4:1 G4+B4:.5' | F#4+B4:.5' F#4+B4:1 "
      "F#4+B4:.5' E4+G4:.5' E4+G4:1 E4+G4:.5'";
  Play(piano, score, score.At(6), rest, 76);
  Play(guitar, score, score.At(6), rest, 68);
  Part& strings = score.Add({"Strings", Voice::kStrings, 0, 48, 0.43F, -0.2F, 0.42F});
  Play(strings, score, score.At(6),
       "F#3+A3+D4:2_ E3+A3+C#4:2_ | D3+F#3+B3:3_ E3+G3+C#4:2_ | F#3+A3+D4:2_ D3+G3+B3:2_ | D3+F#3+B3:2_ "
       "E3+G3+C#4:2_ | D3+G3+B3:4_ | E3+A3+D4:2_ E3+A3+C#4:2_ | D3+F#3+A3+D4:3",
       74);
  Part& bass = score.Add({"Bass", Voice::kBass, 2, 32, 0.53F, 0.0F, 0.05F});
  Play(bass, score, score.At(2),
       "D2:1.5 D2:.5 -:.5 A1:.5 A1:.8' -:.2 | D2:1.5 D2:.5 -:.5 A1:.5 A1:.8' -:.2 | D2:1.5 D2:.5 G2:1.5 "
       "G2:.5 | D2:1.5 D2:.5 -:.5 A1:.5 A1:.8' -:.2 | D2:1.5 D2:.5 C#2:1.5 C#2:.5 | B1:1 B1:1 B1:1 A1:1 A1:1 "
       "| D2:1.5 D2:.5 G2:1.5 G2:.5 | B1:1.5 B1:.5 A1:1.5 A1:.5 | G1:2 G2:2 | A1:2 A1:2 | D2:3",
       94);
}

void WriteTune(Score& score) {
  Part& flute = score.Add({"Flute", Voice::kFlute, 3, 73, 0.46F, 0.14F, 0.30F});
  Part& clarinet = score.Add({"Clarinet", Voice::kClarinet, 6, 71, 0.34F, -0.10F, 0.30F});
  const char bows[] = "F#5:1 E5:.5 D5:.5 B5:1.5_ A5:.5 | F#5:1 D5:.5 F#5:.5 -:.5 E5:.5' C#5:.8' -:.2";
  Play(flute, score, score.At(4), bows, 84);
  const char rest[] =
      "A5:1 G5:.5 F#5:.5 E5:1.5_ C#5:.5 | D5:1 F#5:1 B5:1 A5:1 G5:1 | F#5:1 E5:.5 D5:.5 B5:1.5_ A5:.5 | "
      "F#5:1 D5:1 E5:1 C#5:1 | G5:2 B5:2 | A5:2 E5:2 | D5:3";
  Play(flute, score, score.At(6), rest, 88);
  Play(clarinet, score, score.At(6),
       "D5:2 C#5:2 | B4:2 D5:1 C#5:1 E5:1 | D5:2 D5:2 | D5:2 B4:1 A4:1 | D5:2 G5:2 | F#5:2 C#5:2 | A4:3", 76);
  Part& bells = score.Add({"Glockenspiel", Voice::kBells, 4, 9, 0.30F, 0.40F, 0.40F});
  Play(bells, score, score.At(6),
       "F#6:2 E6:2 | D6:3 E6:2 | F#6:2 B6:2 | F#6:2 E6:2 | G6:2 B6:2 | A6:2 E6:2 | D6+A6:1", 66);
}

void WriteDrums(Score& score) {
  Part& drums = score.Add({"Drums", Voice::kDrums, 9, 0, 0.44F, 0.0F, 0.12F});
  for (const int bar : {2, 3, 4, 5, 6, 8, 9}) {
    Beat(drums, score, score.At(bar), 36, "x..x..x.", 0.5, 98);
    Beat(drums, score, score.At(bar), 38, "..x...x.", 0.5, 76);
    Beat(drums, score, score.At(bar), 42, "xoxoxoxo", 0.5, 60);
  }
  Beat(drums, score, score.At(7), 36, "x.x.x.x.x.", 0.5, 90);
  Beat(drums, score, score.At(7), 54, "xoxoxoxoxo", 0.5, 64);
  Beat(drums, score, score.At(9, 3), 38, "oxxX", 0.25, 74);
  for (const int bar : {6, 10, 12}) Beat(drums, score, score.At(bar), 49, "x", 1, 72);
  Beat(drums, score, score.At(10), 36, "x...x...", 1, 90);
  Beat(drums, score, score.At(11), 38, "x.x.xxX.", 0.5, 66);
  Beat(drums, score, score.At(12), 36, "X", 1, 100);
}

}  // namespace

DemoSong Finale() {
  Score score("Finale", 480);
  WriteTiming(score);
  WriteHarmony(score);
  WriteTune(score);
  WriteDrums(score);
  const Tick start = score.At(2);
  const Tick end = score.At(13);
  return {"10", "Finale", std::move(score), start, end, kCues};
}

}  // namespace orbel::host::demo
