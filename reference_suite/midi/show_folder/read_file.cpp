#include "reference_suite/midi/show_folder/read_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "reference_suite/midi/unreadable.h"

namespace tesk_midi {

namespace {

[[noreturn]] void ThrowSystemError(const char* what) {
  const int error = errno;
  throw FileError(std::string(what) + " (" + std::generic_category().message(error) + "); " +
                  CureOfUnreadable(error) + ".");
}

class OpenFile {
 public:
  // O_NONBLOCK: the open of a pipe would wait for a writer. O_NOCTTY: a terminal would become this program's.
  explicit OpenFile(const std::string& path)
      : descriptor_(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {
    if (descriptor_ < 0) ThrowSystemError("cannot be opened");
  }
  ~OpenFile() { ::close(descriptor_); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  void RequireRegular() const {
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0) ThrowSystemError("cannot be examined");
    if (!S_ISREG(status.st_mode)) throw FileError("is no regular file; put a file of that name there.");
  }

  // Up to `size` bytes; 0 at the end of the file.
  std::size_t Read(char* bytes, std::size_t size) const {
    ssize_t count = -1;
    do count = ::read(descriptor_, bytes, size);
    while (count < 0 && errno == EINTR);
    if (count < 0) ThrowSystemError("cannot be read");
    return static_cast<std::size_t>(count);
  }

 private:
  int descriptor_;
};

}  // namespace

std::string ReadRegularFile(const std::string& path, std::size_t limit) {
  constexpr std::size_t kBlock = 64 * 1024;
  const OpenFile file(path);
  file.RequireRegular();
  // To the end and not to the size that was reported: that may change meanwhile, and some systems report 0.
  std::string bytes;
  while (bytes.size() <= limit) {
    const std::size_t filled = bytes.size();
    bytes.resize(filled + std::min(std::max(kBlock, filled), limit + 1 - filled));
    const std::size_t count = file.Read(bytes.data() + filled, bytes.size() - filled);
    bytes.resize(filled + count);
    if (count == 0) break;
  }
  return bytes;
}

}  // namespace tesk_midi
