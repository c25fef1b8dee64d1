#include "exc/text/split_string.h"

namespace exc {

std::size_t GetTokenSize_(char /*token*/) {
  return 1;
}

std::size_t GetTokenSize_(const std::string& token) {
  return token.size();
}

}  // namespace exc
