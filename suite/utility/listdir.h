#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace exc {

class ListdirError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The names of a folder's entries without "." and "..", of every kind, hidden ones included, sorted by byte
// value so that listings are reproducible. Names are bytes; nothing is decoded.
//
// Throws ListdirError "Unable to list folder \"FOLDER\": REASON" when there is no such folder, it may not be
// read, or reading it fails half-way.
std::vector<std::string> listdir(const std::string& folder);

}  // namespace exc
