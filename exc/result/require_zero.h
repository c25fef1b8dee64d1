#pragma once

#include <string>

#include "exc/result/noerr_error.h"

namespace exc {

// "WHAT: CODE TEXT" with the system's text for an error number.
std::string DescribeSystemError(const std::string& what, int code);

// Throws Error with that text unless `result` is 0. In use as RequireZero<int, exc::NOERRError>.
template <typename Result, typename Error>
void RequireZero(Result result, const std::string& what) {
  if (result != 0) throw Error(DescribeSystemError(what, result));
}

}  // namespace exc
