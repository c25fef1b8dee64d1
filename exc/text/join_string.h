#pragma once

#include <stdexcept>
#include <string>

namespace exc {

// The strings of a range with `token` between them, for instance JoinString(words.begin(), words.end(), " ").
// An empty range gives an empty string.
//
// Throws std::invalid_argument "token must have non-zero length." for an empty separator, whatever the range.
template <typename Iterator>
std::string JoinString(Iterator first, Iterator last, const char (&token)[2]) {
  if (token[0] == '\0') throw std::invalid_argument("token must have non-zero length.");
  std::string joined;
  for (Iterator part = first; part != last; ++part) {
    if (part != first) joined += token[0];
    joined += *part;
  }
  return joined;
}

}  // namespace exc
