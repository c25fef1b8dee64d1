#pragma once

#include <string>
#include <vector>

#include "host/demo/score/score.h"

namespace orbel::host::demo {

struct DemoSong {
  std::string number;
  std::string name;
  Score score;
  Tick audioStart = 0;  // the first frame of the audio sounds here, as `cues` says
  Tick audioEnd = 0;    // and here it ends
  std::string cues;     // the song's TOML file
};

// ---- one file each
DemoSong Overture();
DemoSong StreetWaltz();
DemoSong SceneChange();
DemoSong TheLetter();
DemoSong PatterSong();
DemoSong CutNumber();
DemoSong Finale();

// Every song, by number.
std::vector<DemoSong> AllSongs();

// The show's TOML file. Its first line is the mark by which a demo is known again.
extern const char kShowFile[];
extern const char kShowMark[];

}  // namespace orbel::host::demo
