#include "suite/player_core/active_song_number.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/throws_with_text.h"

namespace {

TEST(ActiveSongNumber, IsNoneUntilItIsSet) {
  ActiveSongNumber number;
  EXPECT_FALSE(number.IsSet());
  EXPECT_TRUE(
      test_support::ThrowsWithText<std::out_of_range>([&] { (void)number.Get(); }, "No song is active."));
  number.Set("2a");
  EXPECT_TRUE(number.IsSet());
  EXPECT_EQ(number.Get(), "2a");
  number.Set("");
  EXPECT_TRUE(number.IsSet());
}

}  // namespace
