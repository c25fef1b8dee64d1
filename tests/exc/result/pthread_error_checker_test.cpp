#include "exc/result/pthread_error_checker.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>
#include <string>

#include "tests/support/throws_with_text.h"

using test_support::ThrowsWithText;

namespace {

auto Check(int result, const std::string& what) {
  return [=] { exc::PThreadErrorChecker<int, std::runtime_error>(result, what); };
}

}  // namespace

TEST(PThreadErrorChecker, PassesZero) {
  EXPECT_NO_THROW(Check(0, "call")());
}

TEST(PThreadErrorChecker, ThrowsWhatEachCodeMeans) {
  EXPECT_TRUE(ThrowsWithText<std::runtime_error>(Check(EAGAIN, "Creating file loader thread"),
                                                 "Creating file loader thread: 11 EAGAIN: The system lacked "
                                                 "the necessary resources to create another thread."));
  EXPECT_TRUE(ThrowsWithText<std::runtime_error>(Check(EINVAL, "what"),
                                                 "what: 22 EINVAL: The value specified by attr is invalid."));
  EXPECT_TRUE(ThrowsWithText<std::runtime_error>(Check(EPERM, "what"),
                                                 "what: 1 EPERM: The caller does not have appropriate "
                                                 "permission to set the required scheduling parameters or "
                                                 "scheduling policy."));
}

TEST(PThreadErrorChecker, HasOneTextForEveryOtherCode) {
  EXPECT_TRUE(ThrowsWithText<std::runtime_error>(Check(ENOMEM, "what"), "what: 12 Unknown result."));
  EXPECT_TRUE(ThrowsWithText<std::runtime_error>(Check(-1, "what"), "what: -1 Unknown result."));
}
