// Files on disk, and what is no file.

#include <fcntl.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "reference_suite/midi/standard_midi_file/smf_limits.h"
#include "tests/reference_suite/midi/standard_midi_file/file_calls.h"
#include "tests/reference_suite/midi/standard_midi_file/midi_bytes.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using namespace midi_bytes;
using tesk_midi::ReadSmf;

class ReadSmfTest : public testing::Test {
 protected:
  void SetUp() override { folder_ = test_support::MakeTemporaryFolder(); }
  void TearDown() override { fs::remove_all(folder_); }

  fs::path Write(const std::string& name, const Bytes& bytes) {
    std::ofstream out(folder_ / name, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return folder_ / name;
  }

  static std::string RefusalOf(const fs::path& path) {
    try {
      ReadSmf(path, "1 Song.mid");
    } catch (const tesk_midi::SmfError& error) {
      return error.what();
    }
    return "accepted";
  }

  fs::path folder_;
};

TEST_F(ReadSmfTest, ReadsAFile) {
  const fs::path path = Write("1 Song.mid", File({Track({Tempo(0, 400'000)})}));
  EXPECT_EQ(ReadSmf(path).tempos.at(0).microsecondsPerQuarter, 400'000u);
}

TEST_F(ReadSmfTest, FollowsALinkToAFile) {
  fs::create_symlink(Write("1 Song.mid", File({Track({Tempo(0, 400'000)})})), folder_ / "link.mid");
  EXPECT_EQ(ReadSmf(folder_ / "link.mid").tempos.size(), 1u);
}

TEST_F(ReadSmfTest, MessagesNameThePathUnlessTheyAreGivenAName) {
  const fs::path path = Write("1 Song.mid", {});
  EXPECT_EQ(RefusalOf(path),
            "1 Song.mid: byte 0: an empty file; export it as a Standard MIDI File of type 0 or 1.");
  try {
    ReadSmf(path);
    FAIL() << "an empty file was accepted";
  } catch (const tesk_midi::SmfError& error) {
    EXPECT_EQ(error.what(),
              path.string() + ": byte 0: an empty file; export it as a Standard MIDI File of type 0 or 1.");
  }
}

TEST_F(ReadSmfTest, MissingFile) {
  EXPECT_EQ(
      RefusalOf(folder_ / "none.mid"),
      "1 Song.mid: byte 0: not opened (No such file or directory); see that the file is there and that it "
      "may be read.");
}

TEST_F(ReadSmfTest, LinkInACircle) {
  fs::create_symlink("a.mid", folder_ / "b.mid");
  fs::create_symlink("b.mid", folder_ / "a.mid");
  EXPECT_EQ(RefusalOf(folder_ / "a.mid"),
            "1 Song.mid: byte 0: not opened (Too many levels of symbolic links); "
            "replace the link, which leads in a circle, by the file itself.");
}

TEST_F(ReadSmfTest, AFolderIsNoRegularFile) {
  EXPECT_EQ(RefusalOf(folder_), "1 Song.mid: byte 0: no regular file; put a MIDI file there.");
}

TEST_F(ReadSmfTest, APipeIsRefusedWithoutWaitingForAWriter) {
  ASSERT_EQ(::mkfifo((folder_ / "pipe.mid").c_str(), 0600), 0);
  EXPECT_EQ(RefusalOf(folder_ / "pipe.mid"), "1 Song.mid: byte 0: no regular file; put a MIDI file there.");
}

TEST_F(ReadSmfTest, ALinkToADeviceIsRefusedBeforeItIsReadFrom) {
  fs::create_symlink("/dev/zero", folder_ / "zero.mid");
  file_calls::readCount = 0;
  EXPECT_EQ(RefusalOf(folder_ / "zero.mid"), "1 Song.mid: byte 0: no regular file; put a MIDI file there.");
  EXPECT_EQ(file_calls::readCount, 0);
}

TEST_F(ReadSmfTest, AFileWhoseKindCannotBeToldIsRefused) {
  const fs::path path = Write("1 Song.mid", File({Track({})}));
  file_calls::failStatus = true;
  EXPECT_EQ(RefusalOf(path), "1 Song.mid: byte 0: no regular file; put a MIDI file there.");
  file_calls::failStatus = false;
}

TEST_F(ReadSmfTest, AReadThatFailsIsTold) {
  // The first page of a process is never mapped, so that reading it as a file fails.
  EXPECT_EQ(
      RefusalOf("/proc/self/mem"),
      "1 Song.mid: byte 0: not read (Input/output error); see that the file is there and that it may be "
      "read.");
}

TEST_F(ReadSmfTest, AnInterruptedReadGoesOn) {
  const fs::path path = Write("1 Song.mid", File({Track({Tempo(0, 400'000)})}));
  file_calls::interruptedReads = 3;
  EXPECT_EQ(ReadSmf(path).tempos.size(), 1u);
  EXPECT_EQ(file_calls::interruptedReads, 0);
}

TEST_F(ReadSmfTest, AFileOfManyBlocksIsReadWhole) {
  const Bytes track = Chunk("MTrk", Joined({Repeated(Tempo(1, 400'000), 100'000), {0, 0xFF, 0x2F, 0}}));
  EXPECT_EQ(ReadSmf(Write("1 Song.mid", File({track}))).tempos.size(), 100'000u);
}

TEST_F(ReadSmfTest, AFileOfTooManyBytesIsRefusedWithoutReadingItAll) {
  const fs::path path = Write("1 Song.mid", {});
  fs::resize_file(path, std::uintmax_t{1} << 40);
  file_calls::readCount = 0;
  EXPECT_EQ(
      RefusalOf(path),
      "1 Song.mid: byte 16777216: more than 16777216 bytes; leave out what the show does not need, such as "
      "notes and SysEx.");
  EXPECT_LT(file_calls::readCount, 64);
}

}  // namespace
