// The show as a whole, once it is on the disk.

#include "host/demo/demo_show.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/demo/songs/demo_song.h"
#include "tests/host/demo/decoded_vorbis.h"
#include "tests/host/demo/loaded_demo.h"
#include "tests/host/demo/scratch_folder.h"
#include "tests/host/demo/write_faults.h"

namespace {

namespace fs = std::filesystem;
using orbel::host::DemoError;
using orbel::host::DemoProgress;
using orbel::host::WriteDemoShow;
using orbel::host::demo::AllSongs;
using orbel::host::demo::DemoSong;
using testing::ElementsAre;
using testing::IsEmpty;

void ExpectAudioAsTheEngineCounts(const fs::path& folder) {
  const LoadedDemo demo;
  for (const DemoSong& song : AllSongs()) {
    SCOPED_TRACE(song.name);
    const fs::path path = folder / "data" / (song.number + " " + song.name + ".obd");
    const DecodedVorbis audio = DecodeVorbis(BytesOfFile(path));
    ASSERT_TRUE(audio.opened);
    const long long frames = demo.FrameAt(song.number, demo.AudioEnd(song.number));
    EXPECT_EQ(audio.promisedFrames, frames);
    EXPECT_EQ(static_cast<long long>(audio.left.size()), frames);
    EXPECT_EQ(audio.rate, 48'000);
    EXPECT_EQ(audio.channels, 2);
    EXPECT_EQ(audio.title, song.name);
  }
}

void ExpectToldOfEachFile(const std::vector<DemoProgress>& told) {
  ASSERT_EQ(told.size(), 23u);
  for (std::size_t index = 0; index < told.size(); ++index) {
    EXPECT_EQ(told[index].done, index);
    EXPECT_EQ(told[index].total, 22u);
  }
  EXPECT_EQ(told.front().file, "show.toml");
  EXPECT_EQ(told[3].file, "data/1 Overture.obd");
  EXPECT_EQ(told.back().file, "");
}

// One test, since the show takes seconds to write.
TEST(DemoShow, HasItsFilesItsAudioIsAsLongAsTheEngineCountsAndASecondRunWritesTheSameBytes) {
  const ScratchFolder scratch;
  const fs::path folder = scratch.Path() / "show";
  std::vector<DemoProgress> told;
  WriteDemoShow(folder, [&](const DemoProgress& progress) { told.push_back(progress); });
  ExpectToldOfEachFile(told);
  const std::vector<std::string> names = FilesIn(folder);
  EXPECT_THAT(
      names,
      ElementsAre("data/1 Overture.obd", "data/10 Finale.obd", "data/2 Street Waltz.obd",
                  "data/2a Scene Change.obd", "data/3 The Letter.obd", "data/4 Patter Song.obd",
                  "data/5 Cut Number.obd", "show.toml", "songs/1 Overture.mid", "songs/1 Overture.toml",
                  "songs/10 Finale.mid", "songs/10 Finale.toml", "songs/2 Street Waltz.mid",
                  "songs/2 Street Waltz.toml", "songs/2a Scene Change.mid", "songs/2a Scene Change.toml",
                  "songs/3 The Letter.mid", "songs/3 The Letter.toml", "songs/4 Patter Song.mid",
                  "songs/4 Patter Song.toml", "songs/5 Cut Number.mid", "songs/5 Cut Number.toml"));
  ExpectAudioAsTheEngineCounts(folder);
  std::vector<std::vector<std::uint8_t>> before;
  for (const std::string& name : names) before.push_back(BytesOfFile(folder / name));
  WriteDemoShow(folder);
  ASSERT_EQ(FilesIn(folder), names);
  for (std::size_t index = 0; index < names.size(); ++index) {
    EXPECT_EQ(BytesOfFile(folder / names[index]), before[index]) << names[index];
  }
}

TEST(DemoShow, AFolderWithSomethingElseInItStaysAsItIs) {
  const ScratchFolder folder;
  PutFile(folder.Path() / "songs/1 Mine.mid", "mine");
  EXPECT_THROW(WriteDemoShow(folder.Path()), DemoError);
  EXPECT_THAT(FilesIn(folder.Path()), ElementsAre("songs/1 Mine.mid"));
}

TEST(DemoShow, AFullDiskIsToldWithTheFile) {
  const ScratchFolder folder;
  const write_faults::Provoke fullDisk({.room = 700});
  try {
    WriteDemoShow(folder.Path());
    FAIL() << "written";
  } catch (const DemoError& error) {
    EXPECT_THAT(error.what(),
                testing::HasSubstr("songs/1 Overture.mid: not written (No space left on device, "));
    EXPECT_THAT(error.what(), testing::HasSubstr("make room on the disk and write the demo again."));
  }
}

TEST(DemoShow, WhatTheProgressThrowsEndsTheWriting) {
  const ScratchFolder folder;
  const auto stop = [](const DemoProgress& progress) {
    if (progress.done == 2) throw std::runtime_error("enough");
  };
  EXPECT_THROW(WriteDemoShow(folder.Path(), stop), std::runtime_error);
  EXPECT_THAT(FilesIn(folder.Path()), IsEmpty()) << "nothing half written is left";
}

}  // namespace
