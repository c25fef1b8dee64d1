// Memory and file descriptors that the system refuses to the program and to the libraries in it. Every single
// allocation of C++ while a show is opened and loaded is refused in session_memory_test.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <cstdlib>
#include <filesystem>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/limit.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::ShowFiles;
using test_support::Limit;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

class RefusedMemory : public testing::TestWithParam<bool> {
 protected:
  RefusedMemory() {
    files_.AddSong("1", "Waltz", 1,
                   "[[marker]]\nat = \"1.2\"\nname = \"A name of more than sixteen letters\"\n");
    files_.AddSong("2", "Polka", 1);
  }
  // `arguments` with the n-th allocation refused, n growing by quarters, until nothing is refused.
  void Squeeze(const std::vector<std::string>& arguments) {
    int refusals = 0;
    int namedASong = 0;
    for (int n = 1; n < 10'000; n += 1 + n / 4) {
      const auto refusing = Refusing({{"ORBEL_REFUSE_MEMORY", std::to_string(n)},
                                      {"ORBEL_REFUSE_MEMORY_FOR_GOOD", GetParam() ? "1" : "0"}});
      std::filesystem::remove(files_.Beside("out.wav"));
      const Ended run = Orbel(arguments);
      SCOPED_TRACE("allocation " + std::to_string(n));
      if (run.status == 0) continue;
      ++refusals;
      ExpectEndedInWords(run);
      EXPECT_EQ(run.status, 1);
      const bool namesSong = run.messages.find("1 Waltz.") != std::string::npos ||
                             run.messages.find("2 Polka.") != std::string::npos;
      namedASong += namesSong ? 1 : 0;
      EXPECT_TRUE(namesSong || run.messages.find(files_.Show()) != std::string::npos) << run.messages;
      EXPECT_FALSE(std::filesystem::exists(files_.Beside("out.wav")));
      EXPECT_FALSE(std::filesystem::exists(files_.Beside("out.wav.part")));
      if (HasFailure()) return;
    }
    EXPECT_GT(refusals, 5);
    EXPECT_GT(namedASong, GetParam() ? 0 : refusals / 8);
  }
  ShowFiles files_;
};

TEST_P(RefusedMemory, ToInfoIsToldInWords) {
  Squeeze({"info", files_.Show()});
}

TEST_P(RefusedMemory, ToARenderIsToldInWords) {
  Squeeze({"render", files_.Show(), "-o", files_.Beside("out.wav")});
}

INSTANTIATE_TEST_SUITE_P(OnceAndForGood, RefusedMemory, testing::Bool());

// Counted from the first allocation of the process, with songs whose library does not look what it is given.
// Every one of them with ORBEL_EVERY_ALLOCATION set, otherwise a sample.
class RefusedAnywhere : public testing::TestWithParam<bool> {
 protected:
  static constexpr int kLast = 20'000;  // of some 14,000
  RefusedAnywhere() {
    for (const char* const song : {"1", "2"}) {
      files_.AddSong(song, "Waltz", 1);
      sound_files::Write(files_.At("data/" + std::string(song) + " Waltz.obd"),
                         SF_FORMAT_OGG | SF_FORMAT_VORBIS, ShowFiles::kRate, 2,
                         sound_files::Sines(ShowFiles::kRate, 2, ShowFiles::kRate));
    }
  }
  static int After(int n) {
    return std::getenv("ORBEL_EVERY_ALLOCATION") != nullptr ? n + 1 : n + 1 + n / 10;
  }
  // With every status but these the test fails, and with a signal.
  void Squeeze(const std::vector<std::string>& arguments, int statusOfRefusal) {
    int refusals = 0;
    int status = 0;
    for (int n = 1; n < kLast; n = After(n)) {
      SCOPED_TRACE("allocation " + std::to_string(n));
      const Ended run = RunRefusing(n, arguments);
      status = run.status;
      EXPECT_THAT(run.messages, Not(HasSubstr("terminate called")));
      EXPECT_THAT(run.messages, Not(HasSubstr("std::bad_alloc")));
      if (status != 0) {
        ++refusals;
        EXPECT_THAT(status, AnyOf(1, statusOfRefusal)) << run.messages;
        EXPECT_THAT(run.messages + run.out, HasSubstr("memory"));
      }
      ExpectNothingHalfWritten(run);
      if (HasFailure()) return;
    }
    EXPECT_GT(refusals, 5);
    EXPECT_EQ(status, 0) << "there are more allocations than were refused";
  }
  Ended RunRefusing(int n, const std::vector<std::string>& arguments) {
    const auto refusing = Refusing({{"ORBEL_REFUSE_MEMORY", std::to_string(n)},
                                    {"ORBEL_REFUSE_MEMORY_FOR_GOOD", GetParam() ? "1" : "0"},
                                    {"ORBEL_REFUSE_MEMORY_AT_ONCE", "1"}});
    std::filesystem::remove(Out());
    return Orbel(arguments);
  }
  void ExpectNothingHalfWritten(const Ended& run) {
    EXPECT_FALSE(std::filesystem::exists(Out() + ".part"));
    EXPECT_TRUE(run.status == 0 || !std::filesystem::exists(Out()));
  }
  std::string Out() const { return files_.Beside("out.wav"); }
  ShowFiles files_;
};

TEST_P(RefusedAnywhere, ToARenderIsToldInWordsOrDoesNotMatter) {
  Squeeze({"render", files_.Show(), "-o", Out()}, 1);
}

TEST_P(RefusedAnywhere, ToACheckIsToldInWordsOrDoesNotMatter) {
  Squeeze({"check", files_.Show()}, 5);
}

// Its messages tell the state whenever that changes.
TEST_P(RefusedAnywhere, ToAPerformanceIsToldInWordsAndEndsNothingThatPlays) {
  files_.Write("stop.txt", "time 0.5 stop\n");
  const std::vector<std::string> arguments{
      "play", files_.Show(), "--output", "null", "--song", "1", "--script", files_.At("stop.txt").string()};
  int played = 0;
  int refusals = 0;
  for (int n = 1; n < kLast; n = After(n)) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    const Ended run = RunRefusing(n, arguments);
    const bool hasPlayed = run.messages.find("playing") != std::string::npos;
    played += hasPlayed ? 1 : 0;
    refusals += run.status != 0 ? 1 : 0;
    EXPECT_EQ(run.status, hasPlayed ? 0 : 1) << run.messages;
    EXPECT_THAT(run.messages, Not(HasSubstr("terminate called")));
    EXPECT_THAT(run.messages, Not(HasSubstr("std::bad_alloc")));
    EXPECT_TRUE(hasPlayed || run.messages.find("memory") != std::string::npos) << run.messages;
    if (HasFailure()) return;
  }
  EXPECT_GT(played, 5);
  EXPECT_GT(refusals, 5);
}

INSTANTIATE_TEST_SUITE_P(OnceAndForGood, RefusedAnywhere, testing::Bool());

TEST(RefusedDescriptors, AreToldInWordsOrNotNeeded) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  files.AddSong("2", "Polka", 1);
  bool refused = false;
  for (rlim_t most = 4; most < 20; ++most) {
    SCOPED_TRACE(most);
    Ended run;
    {
      const Limit limit(RLIMIT_NOFILE, most);
      run = Orbel(
          {"render", files.Show(), "-o", files.Beside("out.wav"), "--trace", files.Beside("trace.csv")});
    }
    if (run.status >= 126) continue;  // not even its libraries or its messages could be opened
    ExpectEndedInWords(run);
    refused = refused || run.status == 1;
    if (run.status == 0) return;
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(host_tests::ReadText(files.Beside("out.wav")), "");
  }
  ADD_FAILURE() << "needs 20 descriptors";
}

}  // namespace
}  // namespace faults
