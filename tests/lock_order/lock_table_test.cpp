#include "tests/support/lock_order/lock_table.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"

namespace lock_order = test_support::lock_order;

namespace {

using Names = std::vector<std::string>;

constexpr const char* kHead =
    "# Locks\n\n## Threads\n\n| tag | thread | what | does |\n| --- | --- | --- | --- |\n| X | y | | z |\n\n"
    "## Lock order\n\ntext\n\n| outer | inner | behind | where |\n| --- | --- | --- | --- |\n";

class LockTable : public testing::Test {
 protected:
  std::vector<lock_order::AllowedPair> Read(const std::string& rows) {
    folder_.WriteFile("locks.md", kHead + rows + "\n## What else\n\n| D | E | | not this table |\n");
    return lock_order::ReadLockTable(folder_.Path("locks.md"));
  }
  test_support::TemporaryFolder folder_;
};

TEST_F(LockTable, HasAPairForEachOfTheInnerNamesOfARow) {
  const auto table = Read("| A | B, C | | here |\n| B | C | Gate | there, not reached by tests |\n");
  ASSERT_EQ(table.size(), 3u);
  EXPECT_EQ(lock_order::Pairs(table),
            (std::set<std::pair<std::string, std::string>>{{"A", "B"}, {"A", "C"}, {"B", "C"}}));
  EXPECT_EQ(table[1].behind, "");
  EXPECT_TRUE(table[1].isReached);
  EXPECT_EQ(table[2].behind, "Gate");
  EXPECT_FALSE(table[2].isReached);
}

TEST_F(LockTable, RefusesRowsThatItDoesNotUnderstandAndDocumentsWithoutIt) {
  EXPECT_THROW(Read("| A | B | |\n"), std::runtime_error);
  EXPECT_THROW(Read("| A | B | | x | y |\n"), std::runtime_error);
  EXPECT_THROW(Read("| | B | | x |\n"), std::runtime_error);
  EXPECT_THROW(Read("| A | B,, C | | x |\n"), std::runtime_error);
  EXPECT_THROW(Read(""), std::runtime_error);
  EXPECT_THROW(lock_order::ReadLockTable(folder_.Path("none.md")), std::runtime_error);
}

TEST_F(LockTable, APairThatItDoesNotHaveIsNotAllowed) {
  const auto table = Read("| A | B | | here |\n");
  EXPECT_EQ(lock_order::FindUnallowed({{"A", "B", {}}, {"B", "A", {}}, {"A", "C", {}}}, table),
            (Names{"\"B\" -> \"A\" is not in the table", "\"A\" -> \"C\" is not in the table"}));
}

TEST_F(LockTable, APairBehindALockIsAllowedOnlyWithIt) {
  const auto table = Read("| A | B | Gate | here |\n");
  EXPECT_EQ(lock_order::FindUnallowed({{"A", "B", {"Gate", "X"}}}, table), Names());
  EXPECT_EQ(lock_order::FindUnallowed({{"A", "B", {"X"}}}, table), Names{"\"A\" -> \"B\" without \"Gate\""});
}

TEST_F(LockTable, APairThatIsCalledNotReachedMustNotBeSeen) {
  const auto table = Read("| A | B | | not reached by tests |\n| B | C | | here |\n");
  EXPECT_EQ(lock_order::FindUnallowed({{"A", "B", {}}}, table),
            Names{"\"A\" -> \"B\" is reached, and the table says that it is not"});
  EXPECT_EQ(lock_order::FindUnreached({}, table), Names{"\"B\" -> \"C\" is never reached"});
  EXPECT_EQ(lock_order::FindUnreached({{"B", "C", {}}}, table), Names());
}

TEST_F(LockTable, ARingIsFound) {
  EXPECT_EQ(lock_order::FindRings(Read("| A | B, C | | x |\n| B | C | | x |\n")), Names());
  EXPECT_EQ(lock_order::FindRings(Read("| A | B | | x |\n| B | C, D | | x |\n| C | A | | x |\n")),
            (Names{"part of a ring: \"A\" -> \"B\"", "part of a ring: \"B\" -> \"C\"",
                   "part of a ring: \"C\" -> \"A\""}));
  EXPECT_EQ(lock_order::FindRings(Read("| A | A | | x |\n")), Names{"part of a ring: \"A\" -> \"A\""});
}

TEST_F(LockTable, TwoOppositesBehindOneLockAreNoRing) {
  EXPECT_EQ(lock_order::FindRings(Read("| A | B | Gate | x |\n| B | A | Gate | x |\n")), Names());
  EXPECT_EQ(lock_order::FindRings(Read("| A | B | | x |\n| B | A | Gate | x |\n")).size(), 2u);
  EXPECT_EQ(lock_order::FindRings(Read("| A | B | Gate | x |\n| B | A | Other | x |\n")).size(), 2u);
}

TEST_F(LockTable, OppositesThatAreKeptApartStillMakeARingOverAThirdLock) {
  const std::string opposites = "| A | B | Gate | x |\n| B | A | Gate | x |\n";
  EXPECT_FALSE(lock_order::FindRings(Read(opposites + "| B | C | | x |\n| C | A | | x |\n")).empty());
  EXPECT_FALSE(lock_order::FindRings(Read(opposites + "| A | C | | x |\n| C | B | | x |\n")).empty());
  EXPECT_TRUE(lock_order::FindRings(Read(opposites + "| A | C | | x |\n| B | C | | x |\n")).empty());
}

}  // namespace
