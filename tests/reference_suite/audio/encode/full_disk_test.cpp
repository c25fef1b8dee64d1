#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <filesystem>

#include "reference_suite/audio/encode/sound_file_writer.h"
#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/sound_files.h"

namespace tesk_audio {
namespace {

using testing::HasSubstr;

// No file of this process may grow beyond `bytes` while this lives: the write that would is refused, as on a
// disk that is full.
class SmallDisk {
 public:
  explicit SmallDisk(rlim_t bytes) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit small{bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
  }
  ~SmallDisk() { ::setrlimit(RLIMIT_FSIZE, &before_); }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

 private:
  void (*const handler_)(int) = ::signal(SIGXFSZ, SIG_IGN);
  rlimit before_{};
};

struct FullDisk : testing::TestWithParam<SoundFileFormat> {
  sound_files::TemporaryFolder folder;
  const std::string path = folder.Path("out");
  const std::vector<float> samples = sound_files::Noise(20000, 2);

  void WriteAll() {
    SoundFileWriter writer(path, GetParam(), 48000.0, 2);
    writer.Write(samples.data(), samples.size() / 2);
    writer.Commit();
  }
};

INSTANTIATE_TEST_SUITE_P(EveryFormat, FullDisk,
                         testing::Values(SoundFileFormat::Float, SoundFileFormat::Pcm24,
                                         SoundFileFormat::Pcm16, SoundFileFormat::Flac,
                                         SoundFileFormat::OggVorbis));

TEST_P(FullDisk, IsSaidWhereverItRunsFullAndLeavesWhatWasThere) {
  WriteAll();
  const std::string complete = sound_files::Bytes(path);
  sound_files::WriteBytes(path, "before");
  // In the header, in the frames, and in the very last byte, which is written while the encoder closes.
  for (const std::size_t room : {std::size_t{0}, std::size_t{10}, std::size_t{100}, complete.size() / 2,
                                 complete.size() - 5000, complete.size() - 1}) {
    try {
      const SmallDisk disk(room);
      WriteAll();
      ADD_FAILURE() << "room for " << room << " of " << complete.size() << " bytes";
    } catch (const TESKAudioError& error) {
      EXPECT_THAT(error.what(), HasSubstr(path + ": cannot be written: File too large; "));
      EXPECT_THAT(error.what(),
                  HasSubstr(" bytes and what follows them are missing, so nothing was kept. Choose "
                            "another place, or make room."));
    }
    EXPECT_FALSE(std::filesystem::exists(path + ".part")) << room;
    EXPECT_EQ(sound_files::Bytes(path), "before") << room;
  }
  const SmallDisk disk(complete.size());
  WriteAll();
  EXPECT_EQ(sound_files::Bytes(path), complete) << "exactly enough is enough";
}

}  // namespace
}  // namespace tesk_audio
