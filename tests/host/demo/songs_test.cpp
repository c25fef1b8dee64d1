// The songs as they are written: complete, in range, and sounding within their audio.

#include <gtest/gtest.h>

#include <set>

#include "host/demo/score/tempo_map.h"
#include "host/demo/songs/demo_song.h"
#include "host/demo/sound/sound.h"

namespace {

using namespace orbel::host::demo;

TEST(DemoSongs, LastBetweenTenAndFortySeconds) {
  const auto songs = AllSongs();
  EXPECT_GE(songs.size(), 5u);
  for (const DemoSong& song : songs) {
    const TempoMap map(song.score, song.audioStart, kSampleRate);
    const double seconds = static_cast<double>(map.FrameAt(song.audioEnd)) / kSampleRate;
    EXPECT_GE(seconds, 10.0) << song.name;
    EXPECT_LE(seconds, 40.0) << song.name;
  }
}

TEST(DemoSongs, EveryTickIsShortEnoughToLoadAsItIs) {
  for (const DemoSong& song : AllSongs()) {
    EXPECT_GE(song.score.Division(), 480u) << song.name;
    EXPECT_EQ(song.score.Tempos().front().tick, 0u) << song.name;
    for (const TempoChange& tempo : song.score.Tempos()) {
      EXPECT_LE(tempo.microsecondsPerQuarter, song.score.Division() * 2500u)
          << song.name << ", tick " << tempo.tick;
    }
  }
}

TEST(DemoSongs, NoNoteReachesPastTheEnd) {
  for (const DemoSong& song : AllSongs()) {
    for (const Part& part : song.score.Parts()) {
      EXPECT_FALSE(part.notes.empty()) << song.name << ", " << part.name;
      for (const Note& note : part.notes) {
        EXPECT_GE(note.tick, song.audioStart) << song.name << ", " << part.name;
        EXPECT_LE(note.tick + note.length, song.audioEnd) << song.name << ", " << part.name;
        EXPECT_TRUE(note.key >= 0 && note.key <= 127) << song.name << ", " << part.name;
      }
    }
  }
}

TEST(DemoSongs, EachPartHasAChannelOfItsOwnAndDrumsHaveTheTenth) {
  for (const DemoSong& song : AllSongs()) {
    std::set<unsigned> channels;
    for (const Part& part : song.score.Parts()) {
      EXPECT_TRUE(channels.insert(part.channel).second) << song.name << ", " << part.name;
      EXPECT_EQ(part.channel == 9, part.voice == Voice::kDrums) << song.name << ", " << part.name;
    }
  }
}

}  // namespace
