// What is no file that can be read: TESKAudioError, with the cure, and nobody waits.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/reference_suite/audio/support/file_calls.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/cout_capture.h"
#include "tests/support/throws_with_text.h"

namespace {

using test_support::ThrowsWithText;

class UnreadableFiles : public testing::Test {
 protected:
  ~UnreadableFiles() override { file_calls::Reset(); }

  std::string MakeSong() const {
    const std::string path = folder_.Path("song");
    sound_files::Write(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 48000, 2,
                       sound_files::Sines(500'000, 2, 48000));
    return path;
  }

  static void ExpectRefused(const std::string& path, const std::string& text) {
    EXPECT_TRUE(ThrowsWithText<tesk_audio::TESKAudioError>([&] { Decode(path); }, path + ": " + text));
    EXPECT_TRUE(ThrowsWithText<tesk_audio::TESKAudioError>([&] { tesk_audio::ProbeAudioFile(path); },
                                                           path + ": " + text));
  }

  sound_files::TemporaryFolder folder_;
};

TEST_F(UnreadableFiles, MissingFile) {
  ExpectRefused(
      folder_.Path("nothing"),
      "the file cannot be opened: No such file or directory. Put the audio file there, or correct its "
      "name.");
}

TEST_F(UnreadableFiles, FileBelowAFile) {
  sound_files::WriteBytes(folder_.Path("a"), "x");
  ExpectRefused(folder_.Path("a/b"),
                "the file cannot be opened: Not a directory. Put the audio file there, or correct its name.");
}

TEST_F(UnreadableFiles, Folder) {
  ExpectRefused(folder_.Path(), "this is a folder, not an audio file. Put the audio file itself there.");
}

TEST_F(UnreadableFiles, PipeIsNotWaitedFor) {
  ASSERT_EQ(::mkfifo(folder_.Path("pipe").c_str(), 0600), 0);
  ExpectRefused(folder_.Path("pipe"), "this is a pipe, not an audio file. Put the audio file itself there.");
}

TEST_F(UnreadableFiles, DeviceAlsoBehindALink) {
  ASSERT_EQ(::symlink("/dev/zero", folder_.Path("link").c_str()), 0);
  ExpectRefused("/dev/zero", "this is a device, not an audio file. Put the audio file itself there.");
  ExpectRefused(folder_.Path("link"),
                "this is a device, not an audio file. Put the audio file itself there.");
}

TEST_F(UnreadableFiles, Socket) {
  const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, folder_.Path("socket").c_str(), sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ExpectRefused(folder_.Path("socket"),
                "this is a socket, not an audio file. Put the audio file itself there.");
  ::close(descriptor);
}

TEST_F(UnreadableFiles, LinksInACircle) {
  ASSERT_EQ(::symlink(folder_.Path("b").c_str(), folder_.Path("a").c_str()), 0);
  ASSERT_EQ(::symlink(folder_.Path("a").c_str(), folder_.Path("b").c_str()), 0);
  ExpectRefused(
      folder_.Path("a"),
      "the file cannot be opened: Too many levels of symbolic links. Replace the link, which leads in a "
      "circle, by the file itself.");
}

TEST_F(UnreadableFiles, LinkToAFileIsAFile) {
  ASSERT_EQ(::symlink(MakeSong().c_str(), folder_.Path("link").c_str()), 0);
  EXPECT_EQ(Decode(folder_.Path("link"))->GetSampleCount(), 500'000U);
}

TEST_F(UnreadableFiles, WithoutPermission) {
  const std::string path = MakeSong();
  ASSERT_EQ(::chmod(path.c_str(), 0), 0);
  const uid_t user = ::geteuid();
  if (user == 0) {
    ASSERT_EQ(::seteuid(65534), 0);
  }
  ExpectRefused(path,
                "the file cannot be opened: Permission denied. Make the file and its folder readable for "
                "this user.");
  ASSERT_EQ(::seteuid(user), 0);
}

TEST_F(UnreadableFiles, NoMoreFileDescriptors) {
  const std::string path = MakeSong();
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  rlimit none = before;
  none.rlim_cur = 0;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  ExpectRefused(path,
                "the file cannot be opened: Too many open files. Close other programs or raise the limit of "
                "open files.");
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_EQ(Decode(path)->GetSampleCount(), 500'000U);
}

TEST_F(UnreadableFiles, BecameAPipeBetweenTheLookAndTheOpening) {
  ASSERT_EQ(::mkfifo(folder_.Path("pipe").c_str(), 0600), 0);
  file_calls::pathsAreRegularFiles = true;
  ExpectRefused(folder_.Path("pipe"), "this is a pipe, not an audio file. Put the audio file itself there.");
}

TEST_F(UnreadableFiles, DiskFailsAtTheStart) {
  const std::string path = MakeSong();
  file_calls::failReadsFrom = 0;
  ExpectRefused(path, "the file cannot be read: Input/output error. Check the disk and copy the file again.");
}

class DiskFailsInTheMiddle : public UnreadableFiles, public testing::WithParamInterface<int> {};

TEST_P(DiskFailsInTheMiddle, IsToldAsThatAndNotAsAShortSong) {
  const test_support::CoutCapture console;
  const std::string path = folder_.Path("song");
  sound_files::Write(path, GetParam(), 48000, 2, sound_files::Noise(3'000'000, 2));
  ASSERT_GT(sound_files::Bytes(path).size(), 700'000U);
  file_calls::failReadsFrom = 300'000;
  file_calls::failReadsTo = 600'000;
  EXPECT_TRUE(ThrowsWithText<tesk_audio::TESKAudioError>(
      [&] { Decode(path); },
      path + ": the file cannot be read: Input/output error. Check the disk and copy the file again."));
  EXPECT_EQ(console.Text(), "");
}

INSTANTIATE_TEST_SUITE_P(Formats, DiskFailsInTheMiddle,
                         testing::Values(SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_FLAC | SF_FORMAT_PCM_16,
                                         SF_FORMAT_OGG | SF_FORMAT_VORBIS, SF_FORMAT_OGG | SF_FORMAT_OPUS));

TEST_F(UnreadableFiles, InterruptedReadsAreRepeated) {
  const std::string path = MakeSong();
  file_calls::interruptedReads = 3;
  EXPECT_EQ(Decode(path)->GetSampleCount(), 500'000U);
  EXPECT_EQ(file_calls::interruptedReads, 0);
}

TEST_F(UnreadableFiles, ASlowDiskIsAskedSeldom) {
  const std::string path = MakeSong();  // 2 MB
  file_calls::readCount = 0;
  Decode(path);
  EXPECT_LE(file_calls::readCount, 20);
}

TEST_F(UnreadableFiles, ADeletedFilePlaysOnFromMemory) {
  const std::string path = MakeSong();
  const auto content = Decode(path);
  ASSERT_EQ(::truncate(path.c_str(), 0), 0);
  ASSERT_EQ(::unlink(path.c_str()), 0);
  EXPECT_EQ(Samples(*content).size(), 1'000'000U);
}

TEST_F(UnreadableFiles, NamesAreShownWithoutControlCharacters) {
  const std::string path = folder_.Path("\x1b[31m\n\xff");
  EXPECT_TRUE(ThrowsWithText<tesk_audio::TESKAudioError>(
      [&] { Decode(path); }, folder_.Path("\\x1b[31m\\x0a\\xff") +
                                 ": the file cannot be opened: No such file or directory. Put the audio file "
                                 "there, or correct its name."));
}

TEST_F(UnreadableFiles, AFileWhoseNameIsNoTextPlays) {
  const std::string path = folder_.Path("\xff\xfe");
  sound_files::Write(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 48000, 1, sound_files::Sines(100, 1, 48000));
  EXPECT_EQ(Decode(path)->GetSampleCount(), 100U);
}

}  // namespace
