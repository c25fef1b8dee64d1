#pragma once

#include "exc/assertion/ex_assertion_error.h"

// Throws exc::ExAssertionError unless `condition` holds. The text is data that hosts and tests know by heart,
// so function, path and line are given and not taken from where the check happens to stand:
//
//   "Assertion failed: CONDITION, function FUNCTION, file PATH, line LINE."
#define EXC_REQUIRE_AT(condition, function, path, line)                       \
  do {                                                                        \
    if (!(condition)) ::exc::FailAssertion(#condition, function, path, line); \
  } while (false)

namespace exc {

// Throws ExAssertionError with the text above. All texts are non-null.
[[noreturn]] void FailAssertion(const char* condition, const char* function, const char* path, int line);

}  // namespace exc
