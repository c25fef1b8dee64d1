#include "host/demo/written_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "host/demo/demo_error.h"

namespace orbel::host::demo {

namespace {

// A file under its temporary name. It is gone again unless it was given its own.
class PartFile {
 public:
  explicit PartFile(const std::filesystem::path& path)
      : path_(path), part_(path.string() + std::string(kPartSuffix)) {
    // O_EXCL behind the removal: never writes through a link that somebody put there.
    ::unlink(part_.c_str());
    descriptor_ = ::open(part_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor_ < 0) Fail_("");
  }

  ~PartFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!isNamed_) ::unlink(part_.c_str());
  }

  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;

  void Write(const std::vector<std::uint8_t>& bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
      const ssize_t count = ::write(descriptor_, bytes.data() + written, bytes.size() - written);
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) {
        Fail_(", " + std::to_string(bytes.size() - written) + " of " + std::to_string(bytes.size()) +
              " bytes are missing");
      }
      written += static_cast<std::size_t>(count);
    }
  }

  // Some file systems tell only here that the bytes found no place.
  void Finish() {
    if (::fsync(descriptor_) != 0) Fail_("");
    const int descriptor = descriptor_;
    descriptor_ = -1;
    if (::close(descriptor) != 0) Fail_("");
    if (::rename(part_.c_str(), path_.c_str()) != 0) Fail_("");
    isNamed_ = true;
  }

 private:
  [[noreturn]] void Fail_(const std::string& progress) const {
    const int reason = errno;
    throw DemoError(path_.string() + ": not written (" + std::generic_category().message(reason) + progress +
                    "); " + Cure_(reason) + ".");
  }

  static std::string Cure_(int reason) {
    if (reason == ENOSPC || reason == EDQUOT) return "make room on the disk and write the demo again";
    return "see that the folder may be written, or choose another one";
  }

  std::filesystem::path path_;
  std::string part_;
  int descriptor_ = -1;
  bool isNamed_ = false;
};

}  // namespace

void WriteFile(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes) {
  PartFile file(path);
  file.Write(bytes);
  file.Finish();
}

}  // namespace orbel::host::demo
