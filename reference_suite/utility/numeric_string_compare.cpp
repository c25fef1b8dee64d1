#include "suite/utility/numeric_string_compare.h"

#include <algorithm>
#include <compare>
#include <cstddef>
#include <string_view>

namespace exc {

namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Takes the run of digits at the front of `text`, without its leading zeros; all zeros give an empty run.
std::string_view TakeNumber(std::string_view& text) {
  std::size_t end = 0;
  while (end < text.size() && IsDigit(text[end])) ++end;
  std::string_view number = text.substr(0, end);
  text.remove_prefix(end);
  number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
  return number;
}

// The longer number is the greater one; of the same length the digits decide.
std::strong_ordering CompareNumbers(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return a.size() <=> b.size();
  return a.compare(b) <=> 0;
}

std::strong_ordering CompareByValue(std::string_view a, std::string_view b) {
  while (!a.empty() && !b.empty()) {
    std::strong_ordering order = std::strong_ordering::equal;
    if (IsDigit(a.front()) && IsDigit(b.front())) {
      const std::string_view numberA = TakeNumber(a);
      order = CompareNumbers(numberA, TakeNumber(b));
    } else {
      order = static_cast<unsigned char>(a.front()) <=> static_cast<unsigned char>(b.front());
      a.remove_prefix(1);
      b.remove_prefix(1);
    }
    if (std::is_neq(order)) return order;
  }
  return a.size() <=> b.size();
}

}  // namespace

bool NumericStringCompare::operator()(const std::string& a, const std::string& b) const {
  const std::strong_ordering order = CompareByValue(a, b);
  return std::is_neq(order) ? std::is_lt(order) : a < b;
}

}  // namespace exc
