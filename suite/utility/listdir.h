#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace exc {

class ListdirError : public std::runtime_error {
 public:
  explicit ListdirError(const std::string& what, int reason = 0)
      : std::runtime_error(what), reason_(reason) {}
  // The system's number for what was wrong, as in errno; 0 when it gave none.
  int GetReason() const { return reason_; }

 private:
  int reason_;
};

// The names of a folder's entries without "." and "..", of every kind, hidden ones included, sorted by byte
// value so that listings are reproducible. Names are bytes; nothing is decoded.
//
// Throws ListdirError "Unable to list folder \"FOLDER\": REASON" when there is no such folder, it may not be
// read, or reading it fails half-way.
std::vector<std::string> listdir(const std::string& folder);

}  // namespace exc
