#include "exc/assertion/require_at.h"

#include "suite/utility/format.h"

namespace exc {

void FailAssertion(const char* condition, const char* function, const char* path, int line) {
  throw ExAssertionError(
      format("Assertion failed: %s, function %s, file %s, line %d.", condition, function, path, line));
}

}  // namespace exc
