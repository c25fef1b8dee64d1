#include "exc/result/require_zero.h"

#include <cstddef>
#include <cstring>

#include "suite/utility/format.h"

namespace exc {

namespace {

// strerror_r comes in two forms: one returns the text, the other a result code and fills the buffer.
[[maybe_unused]] const char* TextOf(const char* text, const char* /*buffer*/) {
  return text;
}
[[maybe_unused]] const char* TextOf(int result, const char* buffer) {
  return result == 0 ? buffer : "Unknown error";
}

}  // namespace

std::string DescribeSystemError(const std::string& what, int code) {
  constexpr std::size_t kTextSize = 256;
  char buffer[kTextSize] = "";
  const char* text = TextOf(strerror_r(code, buffer, kTextSize), buffer);
  return format("%s: %d %s", what.c_str(), code, text);
}

}  // namespace exc
