#include "reference_suite/audio/decode/probed_files.h"

#include <gtest/gtest.h>

namespace {

using tesk_audio::ProbedFiles;

struct stat SomeFile() {
  struct stat file {};
  file.st_dev = 1;
  file.st_ino = 2;
  file.st_size = 3;
  file.st_ctim = {100, 5};
  return file;
}

TEST(ProbedFiles, RemembersAFileThatNobodyTouched) {
  ProbedFiles files;
  EXPECT_FALSE(files.Find(SomeFile()));
  files.Keep(SomeFile(), {1000, 44100.0, 2, "FLAC"}, {102, 0});
  const auto known = files.Find(SomeFile());
  ASSERT_TRUE(known);
  EXPECT_EQ(known->frames, 1000);
  EXPECT_EQ(known->sampleRateHz, 44100.0);
  EXPECT_EQ(known->channels, 2U);
  EXPECT_EQ(known->format, "FLAC");
}

TEST(ProbedFiles, AnotherFileOrAChangedOneIsUnknown) {
  ProbedFiles files;
  files.Keep(SomeFile(), {1000, 44100.0, 2, "FLAC"}, {102, 0});
  struct stat other = SomeFile();
  other.st_dev = 7;
  EXPECT_FALSE(files.Find(other));
  other = SomeFile();
  other.st_ino = 7;
  EXPECT_FALSE(files.Find(other));
  other = SomeFile();
  other.st_size = 7;
  EXPECT_FALSE(files.Find(other));
  other = SomeFile();
  other.st_ctim.tv_sec = 101;
  EXPECT_FALSE(files.Find(other));
  other = SomeFile();
  other.st_ctim.tv_nsec = 6;
  EXPECT_FALSE(files.Find(other));
}

// Two changes within the grain of a file system's clock have the same time.
TEST(ProbedFiles, AFileThatHasJustChangedIsNotKept) {
  ProbedFiles files;
  files.Keep(SomeFile(), {1000, 44100.0, 2, "FLAC"}, {101, 999'999'999});
  EXPECT_FALSE(files.Find(SomeFile()));
  files.Keep(SomeFile(), {1000, 44100.0, 2, "FLAC"}, {90, 0});
  EXPECT_FALSE(files.Find(SomeFile())) << "a file of the future";
}

TEST(ProbedFiles, ManyFilesDoNotGrowWithoutEnd) {
  ProbedFiles files;
  struct stat file = SomeFile();
  for (ino_t i = 0; i <= 10'000; ++i) {
    file.st_ino = i;
    files.Keep(file, {1000, 44100.0, 2, "FLAC"}, {102, 0});
  }
  EXPECT_TRUE(files.Find(file));
  file.st_ino = 0;
  EXPECT_FALSE(files.Find(file));
}

}  // namespace
