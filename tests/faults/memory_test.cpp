// Memory and file descriptors that the system refuses to the program. Every single
// allocation of opening and loading is refused in session_memory_test.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"
#include "tests/support/limit.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::ShowFiles;
using test_support::Limit;
using testing::HasSubstr;

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
    EXPECT_GT(namedASong, GetParam() ? 0 : refusals / 4);
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
