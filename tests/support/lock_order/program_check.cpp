// Linked into a program, this holds every test of it to the table of locks in the documents.
#include <gtest/gtest.h>

#include "tests/support/lock_order/lock_table.h"

namespace lock_order = test_support::lock_order;

namespace {

class LockOrderCheck : public testing::Environment {
 public:
  void SetUp() override {
    table_ = lock_order::ReadLockTable(ORBEL_SOURCE_DIR "/docs/threads-and-locks.md");
    lock_order::Expect(lock_order::Pairs(table_));
  }
  void TearDown() override {
    for (const std::string& wrong : lock_order::FindUnallowed(lock_order::GetNestings(), table_)) {
      ADD_FAILURE() << "lock order: " << wrong;
    }
    for (const std::string& wrong : lock_order::GetBadWaits()) ADD_FAILURE() << "lock order: " << wrong;
  }

 private:
  std::vector<lock_order::AllowedPair> table_;
};

// Owned by the test framework.
testing::Environment* const environment = testing::AddGlobalTestEnvironment(new LockOrderCheck);

}  // namespace
