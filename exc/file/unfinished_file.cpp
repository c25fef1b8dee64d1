#include "exc/file/unfinished_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

#include "exc/file/unfinished_file_error.h"

namespace exc {

namespace {

// Every time, somebody else has given the name away meanwhile: nobody does so for ever, but a file system
// that counts files strangely seems to.
constexpr int kAttempts = 100;

std::string TextOf(int code) {
  return std::generic_category().message(code);
}

[[noreturn]] void Fail(int code) {
  throw UnfinishedFileError(TextOf(code), code);
}

// The name itself when there is nothing yet; of a link that leads to nothing yet, where it leads.
std::string LinkTarget(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> target(::realpath(path.c_str(), nullptr), std::free);
  if (target) return target.get();
  if (errno == ELOOP) Fail(ELOOP);
  std::filesystem::path at = path;
  // No circle: the system would have said so.
  for (std::error_code end; !end;) {
    const std::filesystem::path next = std::filesystem::read_symlink(at, end);
    if (!end) at = at.parent_path() / next;
  }
  return at;
}

// What nobody has left who writes as we do; empty for what we may have left.
std::string WhatIsForeign(const struct stat& status) {
  if (S_ISLNK(status.st_mode)) return "a link";
  if (S_ISDIR(status.st_mode)) return "a folder";
  if (!S_ISREG(status.st_mode)) return "a pipe or a device";
  return status.st_nlink > 1 ? "a file that has another name too" : "";
}

// Looked at before it is opened: to open a pipe is to act on it.
void RequireNothingForeign(const std::string& part) {
  struct stat status {};
  if (::lstat(part.c_str(), &status) != 0) return;
  const std::string foreign = WhatIsForeign(status);
  if (foreign.empty()) return;
  throw UnfinishedFileError(part + ", as it is called until it is complete, is " + foreign +
                                "; remove that, or choose another name",
                            0);
}

// Whether this is what `part` names, and nothing else names it.
bool HasName(int file, const std::string& part) {
  struct stat opened {};
  struct stat named {};
  return ::fstat(file, &opened) == 0 && ::lstat(part.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
         opened.st_ino == named.st_ino && WhatIsForeign(opened).empty();
}

// A descriptor until somebody else takes it.
class Opened {
 public:
  explicit Opened(int file) : file_(file) {}
  ~Opened() {
    if (file_ >= 0) ::close(file_);
  }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;
  int Get() const { return file_; }
  int Take() {
    const int file = file_;
    file_ = -1;
    return file;
  }

 private:
  int file_;
};

[[noreturn]] void FailToOpen(const std::string& part, int code) {
  struct stat status {};
  if (::lstat(part.c_str(), &status) != 0) Fail(code);
  throw UnfinishedFileError(
      part + " cannot be opened (" + TextOf(code) +
          "), as it is called until it is complete; remove that, or choose another name",
      0);
}

// Nothing of it is touched before it is ours. -1 when the name went to something else meanwhile.
int TryToOpen(const std::string& part) {
  RequireNothingForeign(part);
  constexpr int kHow = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  Opened file(::open(part.c_str(), kHow, 0666));
  if (file.Get() < 0 && errno == ELOOP) return -1;
  if (file.Get() < 0) FailToOpen(part, errno);
  if (::flock(file.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    throw UnfinishedFileError(
        "it is being written by another program; wait until that has ended, or choose another name", 0);
  }
  if (!HasName(file.Get(), part)) return -1;
  if (::ftruncate(file.Get(), 0) != 0) Fail(errno);
  return file.Take();
}

int Open(const std::string& part) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const int file = TryToOpen(part);
    if (file >= 0) return file;
  }
  throw UnfinishedFileError("other programs keep taking its name; choose another name", 0);
}

}  // namespace

UnfinishedFile::UnfinishedFile(const std::string& path)
    : path_(LinkTarget(path)), partPath_(PartNameOf(path_)), file_(Open(partPath_)) {}

// Locked to the last: nobody may find it half gone.
UnfinishedFile::~UnfinishedFile() {
  if (file_ < 0) return;
  if (HasName(file_, partPath_)) ::unlink(partPath_.c_str());
  ::close(file_);
}

void UnfinishedFile::Commit() {
  if (::fsync(file_) != 0) Fail(errno);
  // Some file systems tell only here that the bytes found no place. The file itself is closed when it has its
  // name, since its lock goes with it.
  const int second = ::fcntl(file_, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (second < 0 || ::close(second) != 0) Fail(errno);
  if (!HasName(file_, partPath_)) {
    throw UnfinishedFileError(
        partPath_ +
            ", as it is called until it is complete, was replaced or removed meanwhile; write it again",
        0);
  }
  if (std::rename(partPath_.c_str(), path_.c_str()) != 0) Fail(errno);
  ::close(file_);
  file_ = -1;
}

std::string UnfinishedFile::PartNameOf(const std::string& path) {
  constexpr std::size_t kLongestName = 255;
  const std::string suffix = ".part";
  const std::size_t slash = path.rfind('/');
  const std::size_t name = slash == std::string::npos ? 0 : slash + 1;
  const std::string part = path.substr(0, name + kLongestName - suffix.size()) + suffix;
  // One that is cut may be called like that itself.
  return part == path ? path.substr(0, part.size() - suffix.size() - 1) + suffix : part;
}

}  // namespace exc
