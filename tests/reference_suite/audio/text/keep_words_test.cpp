#include "reference_suite/audio/text/keep_words.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "suite/core/tesk_log_exception.h"
#include "tests/support/refused_allocations.h"

namespace {

using test_support::RefusedAllocations;

const char kLong[] = "more words than a string has room for without memory of its own";

TEST(KeepWords, KeepsWhatAnErrorSays) {
  std::string words;
  tesk_audio::KeepWords(&words, std::runtime_error(kLong));
  EXPECT_EQ(words, kLong);
  tesk_audio::KeepWords(&words, "short");
  EXPECT_EQ(words, "short");
}

TEST(KeepWords, OfWantOfMemoryAreWordsThatPeopleUse) {
  std::string words;
  tesk_audio::KeepWords(&words, std::bad_alloc());
  EXPECT_EQ(words, "no memory left");
}

TEST(KeepWords, ForWhichThereIsNoMemoryAreThatThereIsNone) {
  const std::runtime_error error(kLong);
  std::string words;
  long refused = 0;
  {
    RefusedAllocations none(RefusedAllocations::Of::ThisThread, 0, true);
    tesk_audio::KeepWords(&words, error);
    none.End();
    refused = none.Count();
  }
  EXPECT_GT(refused, 0);
  EXPECT_EQ(words, "no memory left");
}

// It would leave the handler that reports, and end the program there.
TEST(KeepWords, ThatAreReportedInsteadAreLostWithoutMemory) {
  RefusedAllocations none(RefusedAllocations::Of::ThisThread, 0, true);
  TeskLogException(kLong, kLong, 1);
  none.End();
  EXPECT_GT(none.Count(), 0);
}

}  // namespace
