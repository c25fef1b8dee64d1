#include "exc/result/require_zero.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "tests/support/throws_with_text.h"

using test_support::ThrowsWithText;

namespace {

auto Require(int result, const std::string& what) {
  return [=] { exc::RequireZero<int, exc::NOERRError>(result, what); };
}

}  // namespace

TEST(RequireZero, PassesZero) {
  EXPECT_NO_THROW(Require(0, "call")());
}

TEST(RequireZero, ThrowsWithTheSystemsText) {
  EXPECT_TRUE(
      ThrowsWithText<exc::NOERRError>(Require(ESRCH, "pthread_join(fld->thread_id, &thread_data)"),
                                      "pthread_join(fld->thread_id, &thread_data): 3 No such process"));
  EXPECT_TRUE(ThrowsWithText<exc::NOERRError>(Require(EINVAL, "what"), "what: 22 Invalid argument"));
}

TEST(RequireZero, HasATextForCodesThatTheSystemDoesNotKnow) {
  EXPECT_TRUE(ThrowsWithText<exc::NOERRError>(Require(4711, "what"), "what: 4711 Unknown error 4711"));
  EXPECT_TRUE(ThrowsWithText<exc::NOERRError>(Require(-1, "what"), "what: -1 Unknown error -1"));
}

TEST(RequireZero, LeavesPercentSignsAlone) {
  EXPECT_TRUE(
      ThrowsWithText<exc::NOERRError>(Require(EPERM, "100%s %d"), "100%s %d: 1 Operation not permitted"));
}

TEST(NOERRError, IsARuntimeError) {
  EXPECT_TRUE((std::is_base_of_v<std::runtime_error, exc::NOERRError>));
}
