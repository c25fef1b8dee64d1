#pragma once

#include <string>

namespace exc {

// Orders strings the way people number things: runs of digits compare by value, everything else byte by byte,
// so "2" < "2a" < "10". Digits come before what follows them in ASCII and after what precedes them.
//
// A total order, so a map never takes two spellings for one key: strings that differ in leading zeros alone
// are next to each other, in byte order ("01" < "1" < "2"). Numbers may be of any length.
struct NumericStringCompare {
  bool operator()(const std::string& a, const std::string& b) const;
};

}  // namespace exc
