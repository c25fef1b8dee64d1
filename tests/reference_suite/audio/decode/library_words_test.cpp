// What libraries print by themselves, where the program wants only its own words.
#include "reference_suite/audio/decode/library_words.h"

#include <gtest/gtest.h>
#include <sndfile.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <thread>

#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/cout_capture.h"

namespace {

class LibraryWords : public testing::Test {
 public:
  // Whichever test comes next finds the library as loud as it is.
  ~LibraryWords() override {
    if (stderr == before_) return;
    std::fclose(stderr);
    stderr = before_;
  }

 protected:
  // What arrives at standard error meanwhile.
  template <typename Action>
  std::string Printed(const Action& action) const {
    const std::string path = folder_.Path("printed");
    std::FILE* const file = std::fopen(path.c_str(), "w");
    const int before = ::dup(STDERR_FILENO);
    ::dup2(::fileno(file), STDERR_FILENO);
    action();
    ::dup2(before, STDERR_FILENO);
    ::close(before);
    std::fclose(file);
    return sound_files::Bytes(path);
  }

  void DecodeDamagedMp3s() const {
    const std::string path = folder_.Path("1 Song.obd");
    sound_files::Write(path, SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 48000, 2,
                       sound_files::Noise(48'000, 2));
    const std::string song = sound_files::Bytes(path);
    const std::size_t part = song.size() / 4;
    std::string hole = song;
    hole.replace(part, part, part, '\0');
    std::string garbage = song;
    for (std::size_t i = part; i < 2 * part; ++i) garbage[i] = static_cast<char>(i * i >> 3);
    for (const std::string& damaged : {song.substr(0, 2 * part), hole, garbage, song.substr(part)}) {
      sound_files::WriteBytes(path, damaged);
      const test_support::CoutCapture console;
      try {
        Decode(path);
      } catch (const tesk_audio::AudioSampleContentError&) {
        // told in words of our own
      }
    }
  }

  sound_files::TemporaryFolder folder_;

 private:
  std::FILE* const before_ = stderr;
};

TEST_F(LibraryWords, OnDamagedMp3sAreDropped) {
  const std::string words = Printed([this] { DecodeDamagedMp3s(); });
  // Where nothing is printed there is nothing to drop, and a pass would prove nothing.
  if (words.empty()) GTEST_SKIP() << "this version of the library says nothing";
  tesk_audio::KeepLibrariesQuiet();
  EXPECT_EQ(Printed([this] { DecodeDamagedMp3s(); }), "");
}

TEST_F(LibraryWords, OfAllOthersArrive) {
  tesk_audio::KeepLibrariesQuiet();
  const std::string words = Printed([] {
    std::fputs("before ", stderr);
    {
      const tesk_audio::InsideLibrary inside;
      std::fputs("inside ", stderr);
      std::thread([] { std::fputs("beside ", stderr); }).join();
      const tesk_audio::InsideLibrary deeper;
    }
    std::fprintf(stderr, "%d", 7);
  });
  EXPECT_EQ(words, "before beside 7");
}

}  // namespace
