#pragma once

#include <stdexcept>
#include <string>

namespace exc {

// "WHAT: CODE TEXT" with what an error number of pthread_create means.
std::string DescribePThreadError(const std::string& what, int code);

// Throws Error with that text unless `result` is 0. In use as PThreadErrorChecker<int, std::runtime_error>.
template <typename Result, typename Error>
void PThreadErrorChecker(Result result, const std::string& what) {
  if (result != 0) throw Error(DescribePThreadError(what, result));
}

}  // namespace exc
