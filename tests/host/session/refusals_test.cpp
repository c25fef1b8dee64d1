#include "host/session/refusals.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace orbel::host {
namespace {

TEST(Refusals, AWantOfMemoryHasWords) {
  EXPECT_EQ(InWords(std::bad_alloc()), "there is not enough memory; close other programs");
  EXPECT_EQ(InWords(std::runtime_error("data/1 Waltz.obd: is empty")), "data/1 Waltz.obd: is empty");
}

}  // namespace
}  // namespace orbel::host
