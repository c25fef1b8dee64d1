#include "suite/utility/format.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <stdexcept>

namespace exc {

std::string format(const char* pattern, ...) {
  std::va_list arguments;
  std::va_list again;
  va_start(arguments, pattern);
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, pattern, arguments);
  va_end(arguments);
  if (length < 0) {
    va_end(again);
    throw std::runtime_error(std::string("Unable to format \"") + pattern + "\".");
  }
  // One more for the terminating null, which a string has room for behind its end.
  std::string text(static_cast<std::size_t>(length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, pattern, again);
  va_end(again);
  return text;
}

}  // namespace exc
