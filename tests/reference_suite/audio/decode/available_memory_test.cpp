#include "reference_suite/audio/decode/available_memory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

#include "tests/support/limit.h"
#include "tests/support/temporary_folder.h"

namespace {

constexpr unsigned long long kUnlimited = std::numeric_limits<unsigned long long>::max();

// Control groups as the system shows them, in a folder of the test's own.
class GroupMemory : public testing::Test {
 protected:
  void Put(const std::string& group, const std::string& limit, const std::string& used,
           const std::string& cached = "") const {
    const std::filesystem::path folder = folder_.Path() + group;
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "memory.max") << limit << '\n';
    std::ofstream(folder / "memory.current") << used << '\n';
    if (!cached.empty())
      std::ofstream(folder / "memory.stat") << "anon 5\nactive_file 7\ninactive_file " << cached << '\n';
  }
  unsigned long long LeftFor(const std::string& groups) const {
    std::istringstream text(groups);
    return tesk_audio::GroupMemoryBytes(text, folder_.Path());
  }
  test_support::TemporaryFolder folder_;
};

TEST_F(GroupMemory, IsUnlimitedWhereNoGroupHasALimit) {
  EXPECT_EQ(LeftFor(""), kUnlimited);
  EXPECT_EQ(LeftFor("4:memory:/some\n"), kUnlimited);
  Put("/user", "max", "300");
  EXPECT_EQ(LeftFor("0::/user\n"), kUnlimited);
  EXPECT_EQ(LeftFor("0::/user/that/is/not/shown\n"), kUnlimited);
}

TEST_F(GroupMemory, IsWhatTheProcessesOwnGroupLeaves) {
  Put("/user", "max", "9000");
  Put("/user/show", "1000", "300");
  Put("/user/other", "10", "9");
  EXPECT_EQ(LeftFor("4:memory:/user/other\n0::/user/show\n"), 700U);
}

TEST_F(GroupMemory, IsWhatTheTightestGroupAroundItLeaves) {
  Put("", "5000", "4950");
  Put("/user", "4000", "3900");
  Put("/user/show", "1000", "300");
  EXPECT_EQ(LeftFor("0::/user/show\n"), 50U);
  Put("", "max", "4950");
  EXPECT_EQ(LeftFor("0::/user/show\n"), 100U);
}

TEST_F(GroupMemory, IsTheOutermostGroupsWhereThatIsAllThatIsShown) {
  Put("", "5000", "4000");
  EXPECT_EQ(LeftFor("0::/\n"), 1000U);
  EXPECT_EQ(LeftFor("0::/../elsewhere\n"), 1000U);
  EXPECT_EQ(LeftFor(""), 1000U);
}

TEST_F(GroupMemory, CountsWhatIsKeptOfFilesAsFree) {
  Put("/show", "1000", "900", "600");
  EXPECT_EQ(LeftFor("0::/show\n"), 700U);
  Put("/show", "1000", "1200", "100");
  EXPECT_EQ(LeftFor("0::/show\n"), 0U);
}

TEST(AvailableMemory, IsNoMoreThanTheAddressSpaceThatIsLeft) {
  constexpr unsigned long long kMebibyte = 1ULL << 20U;
  unsigned long long pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  const unsigned long long taken = pages * static_cast<unsigned long long>(::sysconf(_SC_PAGESIZE));
  ASSERT_GT(tesk_audio::AvailableMemoryBytes(), 40 * kMebibyte) << "the machine itself is out of memory";
  {
    const test_support::Limit limit(RLIMIT_AS, taken + 32 * kMebibyte);
    EXPECT_LE(tesk_audio::AvailableMemoryBytes(), 32 * kMebibyte);
    EXPECT_GT(tesk_audio::AvailableMemoryBytes(), 24 * kMebibyte);
  }
  const test_support::Limit limit(RLIMIT_AS, taken - kMebibyte);
  EXPECT_EQ(tesk_audio::AvailableMemoryBytes(), 0U);
}

}  // namespace
