#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace exc {

// How many characters of the text a separator takes.
std::size_t GetTokenSize_(char token);
std::size_t GetTokenSize_(const std::string& token);

// The parts of `text` between separators, in order. Two separators in a row have an empty part between them,
// one at either end has an empty part beyond it, and an empty text is one empty part: joined again with the
// separator the parts are the text.
//
// `maxSplits`: after so many separators the rest is one part; negative means no limit.
// Throws std::invalid_argument "token must have non-zero length." for an empty separator.
template <typename Token>
std::vector<std::string> SplitString(const std::string& text, const Token& token, int maxSplits = -1) {
  const std::size_t width = GetTokenSize_(token);
  if (width == 0) throw std::invalid_argument("token must have non-zero length.");
  std::vector<std::string> parts;
  std::size_t begin = 0;
  for (int splits = 0; maxSplits < 0 || splits < maxSplits; ++splits) {
    const std::size_t end = text.find(token, begin);
    if (end == std::string::npos) break;
    parts.push_back(text.substr(begin, end - begin));
    begin = end + width;
  }
  parts.push_back(text.substr(begin));
  return parts;
}

}  // namespace exc
