#include "host/demo/songs/demo_song.h"

namespace orbel::host::demo {

const char kShowMark[] = "# Written by \"orbel demo\".";

const char kShowFile[] =
    R"(# Written by "orbel demo". It writes over this folder again when asked to: copy the
# folder under another name before you change anything that you want to keep.
format = 1
title = "A Short Evening"

# Without this line the songs come by their numbers. "The Letter" went behind the
# patter song in rehearsal; number 5 was cut and follows last of all.
order = ["1", "2", "2a", "4", "3", "10"]
)";

std::vector<DemoSong> AllSongs() {
  std::vector<DemoSong> songs;
  songs.push_back(Overture());
  songs.push_back(StreetWaltz());
  songs.push_back(SceneChange());
  songs.push_back(TheLetter());
  songs.push_back(PatterSong());
  songs.push_back(CutNumber());
  songs.push_back(Finale());
  return songs;
}

}  // namespace orbel::host::demo
