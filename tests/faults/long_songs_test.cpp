// Songs of minutes, which are decoded on several threads where there are cores: what is refused, fails or
// changes in the middle of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <string>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"
#include "tests/support/wait_until.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::ReadFloatWav;
using host_tests::ReadText;
using host_tests::RunningOrbel;
using host_tests::ShowFiles;
using testing::HasSubstr;

constexpr unsigned kSeconds = 100;
constexpr long long kHeader = 44;
constexpr long long kBytes = 4LL * kSeconds * ShowFiles::kRate;  // of samples
// Behind it reads whoever decodes the second half.
constexpr long long kThreeQuarters = kHeader + kBytes * 3 / 4;

class LongSongs : public testing::Test {
 protected:
  LongSongs() {
    files_.AddSong("1", "Waltz", kSeconds);
    files_.AddSong("2", "Polka", 1);
  }
  std::string Audio() const { return files_.At("data/1 Waltz.obd").string(); }
  std::string Out() const { return files_.Beside("out.wav"); }
  Ended Render(const char* song) const {
    std::filesystem::remove(Out());
    return Orbel({"render", files_.Show(), "-o", Out(), "--song", song});
  }
  void ExpectWhole(const Ended& run) const {
    EXPECT_EQ(run.status, 0) << run.messages;
    EXPECT_TRUE(ReadFloatWav(Out()) == host_tests::FramesFromZero(kSeconds * ShowFiles::kRate));
  }
  void ExpectTheOtherPlays() const {
    EXPECT_EQ(Render("2").status, 0);
    EXPECT_EQ(ReadFloatWav(Out()).size(), ShowFiles::kRate);
  }
  // A render during which `what` happens while the second half is read.
  Ended RenderWhile(const std::function<void()>& what) const {
    for (const char* const name : {"gate", "held", "out.wav"}) std::filesystem::remove(files_.Beside(name));
    const auto holding = Refusing({{"ORBEL_HOLD_READ", "1 Waltz.obd:" + std::to_string(kThreeQuarters)},
                                   {"ORBEL_HOLD_UNTIL", files_.Beside("gate")},
                                   {"ORBEL_COUNT_HELD", files_.Beside("held")}});
    RunningOrbel running({"render", files_.Show(), "-o", Out(), "--song", "1"});
    EXPECT_TRUE(test_support::WaitUntil([&] { return !ReadText(files_.Beside("held")).empty(); },
                                        std::chrono::minutes(1)));
    what();
    std::ofstream(files_.Beside("gate")) << "go";
    return running.WaitForEnd();
  }

  ShowFiles files_;
};

TEST_F(LongSongs, AReadErrorInTheSecondHalfIsToldAndTheOtherSongPlays) {
  {
    const auto refusing = Refusing({{"ORBEL_REFUSE_READ", "1 Waltz.obd:" + std::to_string(kThreeQuarters)}});
    const Ended run = Render("1");
    EXPECT_EQ(run.status, 1);
    ExpectEndedInWords(run);
    EXPECT_THAT(run.messages, HasSubstr("1 Waltz.obd: the file cannot be read: Input/output error"));
    EXPECT_FALSE(std::filesystem::exists(Out()));
    ExpectTheOtherPlays();
  }
  ExpectWhole(Render("1"));
}

// The threads of a render: waiting, position updates, deleting, loading, and those that decode.
TEST_F(LongSongs, AThreadThatIsRefusedCostsNoSample) {
  for (int nth = 1; nth <= 9; ++nth) {
    SCOPED_TRACE(nth);
    const auto refusing = Refusing({{"ORBEL_REFUSE_THREAD", std::to_string(nth)}});
    ExpectWhole(Render("1"));
  }
}

TEST_F(LongSongs, ThreadsThatAreRefusedFromThenOnCostNoSampleOrAreToldInWords) {
  int played = 0;
  for (int nth = 1; nth <= 9; ++nth) {
    SCOPED_TRACE(nth);
    const auto refusing =
        Refusing({{"ORBEL_REFUSE_THREAD", std::to_string(nth)}, {"ORBEL_REFUSE_THREAD_FOR_GOOD", "1"}});
    const Ended run = Render("1");
    ExpectEndedInWords(run);
    if (run.status == 0) {
      ExpectWhole(run);
      ++played;
      continue;
    }
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.messages, HasSubstr("Close other programs"));
    EXPECT_FALSE(std::filesystem::exists(Out()));
  }
  EXPECT_GT(played, 2) << "without threads of their own to decode on";
}

TEST_F(LongSongs, ReplacedOrRemovedInTheMiddleTheyPlayAsTheyWere) {
  ExpectWhole(RenderWhile([&] {
    files_.Write("new", "no audio at all");
    std::filesystem::rename(files_.At("new"), Audio());
  }));
  files_.AddSong("1", "Waltz", kSeconds);
  ExpectWhole(RenderWhile([&] { std::filesystem::remove(Audio()); }));
}

TEST_F(LongSongs, CutOffInTheMiddleTheyPlayWhatIsThereAndSilence) {
  const Ended run = RenderWhile([&] { std::filesystem::resize_file(Audio(), kHeader + kBytes * 5 / 8); });
  EXPECT_EQ(run.status, 0);
  std::smatch only;
  const std::regex words(
      "warning: data/1 Waltz\\.obd: only ([0-9]+) of 800000 frames could be decoded; it plays like that");
  ASSERT_TRUE(std::regex_search(run.messages, only, words)) << run.messages;
  const int decoded = std::stoi(only[1]);
  // What lies behind the cut may have been read before, by another thread.
  EXPECT_GE(decoded, 490'000);
  EXPECT_LT(decoded, 800'000);
  std::vector<float> expected = host_tests::FramesFromZero(500'000);
  expected.resize(kSeconds * ShowFiles::kRate);
  const std::vector<float> heard = ReadFloatWav(Out());
  ASSERT_EQ(heard.size(), expected.size());
  EXPECT_TRUE(std::equal(heard.begin(), heard.begin() + 490'000, expected.begin()));
  EXPECT_EQ(heard.back(), 0.0F);
}

TEST_F(LongSongs, MemoryThatIsRefusedIsToldInWordsOrCostsNoSample) {
  int refusals = 0;
  for (int n = 1; n < 10'000; n += 1 + n / 4) {
    SCOPED_TRACE(n);
    const auto refusing = Refusing({{"ORBEL_REFUSE_MEMORY", std::to_string(n)}});
    const Ended run = Render("1");
    ExpectEndedInWords(run);
    if (run.status == 0) {
      ExpectWhole(run);
      continue;
    }
    ++refusals;
    EXPECT_EQ(run.status, 1);
    EXPECT_FALSE(std::filesystem::exists(Out()));
  }
  EXPECT_GT(refusals, 5);
}

}  // namespace
}  // namespace faults
