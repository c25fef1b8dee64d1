#include "exc/text/equal.h"

namespace exc {

bool equal(long double a, long double b) {
  return a == b;
}

}  // namespace exc
