#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

#include "reference_suite/midi/standard_midi_file/smf_limits.h"
#include "reference_suite/midi/standard_midi_file/smf_messages.h"
#include "reference_suite/midi/standard_midi_file/smf_reader.h"
#include "reference_suite/midi/unreadable.h"

namespace tesk_midi {

namespace {

[[noreturn]] void RefuseFile(const std::string& name, std::size_t offset, const std::string& what) {
  const int error = errno;
  RefuseSmf(name, offset, what + " (" + std::generic_category().message(error) + ")",
            CureOfUnreadable(error));
}

class OpenFile {
 public:
  OpenFile(const std::filesystem::path& path, const std::string& name)
      // Without O_NONBLOCK the open of a pipe would wait for a writer.
      : descriptor_(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
    if (descriptor_ < 0) RefuseFile(name, 0, "not opened");
  }
  ~OpenFile() { ::close(descriptor_); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  int Descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

void RequireRegularFile(const OpenFile& file, const std::string& name) {
  struct stat status {};
  if (::fstat(file.Descriptor(), &status) == 0 && S_ISREG(status.st_mode)) return;
  RefuseSmf(name, 0, "no regular file", "put a MIDI file there");
}

// Reads to the end rather than to the size that was reported, which may have changed since; one byte more
// than the limit is enough for the parser to refuse the file by its size.
std::vector<std::uint8_t> ReadToEnd(const OpenFile& file, const std::string& name) {
  constexpr std::size_t kBlock = 64 * 1024;
  std::vector<std::uint8_t> bytes;
  std::size_t filled = 0;
  while (filled <= kMaxSmfBytes) {
    const std::size_t size = 2 * filled < kMaxSmfBytes ? std::max(2 * filled, kBlock) : kMaxSmfBytes + 1;
    bytes.reserve(size);  // resize alone may take twice as much
    bytes.resize(size);
    const ssize_t count = ::read(file.Descriptor(), bytes.data() + filled, bytes.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) RefuseFile(name, filled, "not read");
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  bytes.resize(filled);
  return bytes;
}

}  // namespace

StandardMidiFile ReadSmf(const std::filesystem::path& path) {
  return ReadSmf(path, path.string());
}

StandardMidiFile ReadSmf(const std::filesystem::path& path, const std::string& displayName) {
  const OpenFile file(path, displayName);
  RequireRegularFile(file, displayName);
  return ParseSmf(ReadToEnd(file, displayName), displayName);
}

}  // namespace tesk_midi
