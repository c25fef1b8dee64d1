#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace tesk_midi {

// A file that the system does not let be read. what() says why and what to do about it, without the file's
// name.
class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The bytes of a file of at most `limit` bytes; of a longer one the first `limit` + 1, for the caller to
// tell. Only regular files, and links to such, are read: a pipe, a device or a folder is refused without
// waiting for it. Throws FileError.
std::string ReadRegularFile(const std::string& path, std::size_t limit);

}  // namespace tesk_midi
