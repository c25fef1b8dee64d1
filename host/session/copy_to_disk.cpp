#include "host/session/copy_to_disk.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <vector>

#include "host/session/failure.h"
#include "host/session/interrupts.h"
#include "host/session/shown_text.h"

namespace orbel::host {
namespace {

class OpenFile {
 public:
  OpenFile(const std::string& path, int flags) : file_(::open(path.c_str(), flags | O_CLOEXEC, 0666)) {}
  ~OpenFile() {
    if (file_ >= 0) ::close(file_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  int Get() const { return file_; }

 private:
  int file_;
};

[[noreturn]] void FailToCopy(const std::string& from) {
  const std::string reason = std::generic_category().message(errno);
  throw Failure(Shown(from) + ": cannot be copied into the show: " + reason +
                "; make room, or see that it may be read");
}

}  // namespace

// By hand, since the standard library's copy says "Input/output error" when the disk is full.
void CopyToDisk(const std::string& from, const std::string& to) {
  const OpenFile in(from, O_RDONLY);
  const OpenFile out(to, O_WRONLY | O_CREAT | O_EXCL);
  if (in.Get() < 0 || out.Get() < 0) FailToCopy(from);
  std::vector<char> bytes(1 << 16);
  while (const ssize_t got = ::read(in.Get(), bytes.data(), bytes.size())) {
    if (got < 0) FailToCopy(from);
    RequireUninterrupted(Shown(from) + " was not copied into the show");
    for (ssize_t done = 0; done < got;) {
      const ssize_t written = ::write(out.Get(), bytes.data() + done, static_cast<std::size_t>(got - done));
      if (written <= 0) FailToCopy(from);
      done += written;
    }
  }
  if (::fsync(out.Get()) != 0) FailToCopy(from);
}

}  // namespace orbel::host
