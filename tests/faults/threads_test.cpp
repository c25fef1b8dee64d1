// Threads that the system refuses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::ShowFiles;
using testing::HasSubstr;

// Position updates, deleting, loading the first song and its neighbour, the output.
constexpr int kThreadsOfAPlayer = 8;
// It makes its own frames and ends before another song would be loaded.
constexpr int kThreadsOfARender = 4;

class RefusedThread : public testing::TestWithParam<int> {
 protected:
  RefusedThread() {
    files_.AddSong("1", "Waltz", 1);
    files_.AddSong("2", "Polka", 1);
    files_.AddSong("3", "Galop", 1);
  }
  ShowFiles files_;
};

TEST_P(RefusedThread, OnceIsAskedForAgainAndTheShowPlays) {
  const auto refusing = Refusing({{"ORBEL_REFUSE_THREAD", std::to_string(GetParam())}});
  const Ended run = Orbel({"play", files_.Show()});
  ExpectEndedInWords(run);
  EXPECT_EQ(run.status, 0) << run.messages;
  for (const char* song : {"1 Waltz   bar 1.1", "2 Polka   bar 1.1", "3 Galop   bar 1.1"}) {
    EXPECT_THAT(run.messages, HasSubstr(song));
  }
}

TEST_P(RefusedThread, ForGoodIsToldInWords) {
  const auto refusing =
      Refusing({{"ORBEL_REFUSE_THREAD", std::to_string(GetParam())}, {"ORBEL_REFUSE_THREAD_FOR_GOOD", "1"}});
  const Ended run = Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  ExpectEndedInWords(run);
  if (GetParam() > kThreadsOfARender) {
    EXPECT_EQ(run.status, 0) << run.messages;
    return;
  }
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr("Close other programs"));
  EXPECT_EQ(host_tests::ReadText(files_.Beside("out.wav")), "");
}

INSTANTIATE_TEST_SUITE_P(TheNth, RefusedThread, testing::Range(1, kThreadsOfAPlayer + 1));

}  // namespace
}  // namespace faults
