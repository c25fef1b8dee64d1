#pragma once

namespace exc {

// Exact comparison, said in words: no tolerance is meant here. NaN equals nothing, 0 equals -0.
bool equal(long double a, long double b);

}  // namespace exc
