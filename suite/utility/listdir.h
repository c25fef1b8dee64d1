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

// The names of a folder's entries, of every kind, sorted by byte value so that listings are reproducible.
// Names are bytes; nothing is decoded. Hidden ones, which begin with a dot, are left out: systems and
// programs leave such beside what a person has put there, "._1 Waltz.obd" for instance, which is no song's
// audio.
//
// Throws ListdirError "Unable to list folder \"FOLDER\": REASON" when there is no such folder, it may not be
// read, or reading it fails half-way.
std::vector<std::string> listdir(const std::string& folder);

}  // namespace exc
