#include "reference_suite/audio/encode/part_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>

#include "reference_suite/audio/encode/sound_file_error.h"
#include "reference_suite/audio/text/shown_path.h"

namespace tesk_audio {

namespace {

// Taking the name of what is there would fail at the very end, or put a file in the place of a device.
void RequireNameForAFile(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode)) return;
  throw SoundFileError(ShownPath(path) + ": cannot be written: there is a " +
                       (S_ISDIR(status.st_mode) ? "folder" : "device or a pipe") +
                       " of that name. Choose another name.");
}

// Where a link leads to, so that the link stays; the name itself when there is nothing yet.
std::string LinkTarget(const std::string& path) {
  RequireNameForAFile(path);
  const std::unique_ptr<char, void (*)(void*)> target(::realpath(path.c_str(), nullptr), std::free);
  return target ? target.get() : path;
}

// PATH.part, of a name that file systems take: as much of the end of a long one goes as is needed.
std::string PartPath(const std::string& path) {
  constexpr std::size_t kLongestName = 255;
  const std::string suffix = ".part";
  const std::size_t slash = path.rfind('/');
  const std::size_t name = slash == std::string::npos ? 0 : slash + 1;
  return path.substr(0, name + kLongestName - suffix.size()) + suffix;
}

}  // namespace

PartFile::PartFile(const std::string& path)
    : path_(path), finalPath_(LinkTarget(path)), partPath_(PartPath(finalPath_)) {
  file_ = ::open(partPath_.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file_ < 0) error_ = errno;
  Check();
}

PartFile::~PartFile() {
  if (file_ < 0) return;
  ::close(file_);
  ::unlink(partPath_.c_str());
}

long long PartFile::Write(const void* bytes, long long count) {
  long long done = 0;
  while (error_ == 0 && done < count) {
    const ssize_t written =
        ::write(file_, static_cast<const char*>(bytes) + done, static_cast<std::size_t>(count - done));
    if (written > 0) {
      done += written;
    } else if (written < 0 && errno != EINTR) {
      error_ = errno;
      missing_ = count - done;
    }
  }
  return done;
}

long long PartFile::Read(void* bytes, long long count) {
  long long done = 0;
  while (done < count) {
    const ssize_t got =
        ::read(file_, static_cast<char*>(bytes) + done, static_cast<std::size_t>(count - done));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    done += got;
  }
  return done;
}

long long PartFile::Seek(long long offset, int whence) {
  return ::lseek(file_, static_cast<off_t>(offset), whence);
}

long long PartFile::GetLength() const {
  struct stat status {};
  return ::fstat(file_, &status) == 0 ? status.st_size : -1;
}

void PartFile::Check() const {
  if (error_ == 0) return;
  std::string text = ShownPath(path_) + ": cannot be written: " + std::generic_category().message(error_);
  if (missing_ > 0) {
    text += "; " + std::to_string(missing_) + " bytes and what follows them are missing, so nothing was kept";
  }
  throw SoundFileError(text + ". Choose another place, or make room.");
}

void PartFile::Commit() {
  Check();
  if (::fsync(file_) != 0 || std::rename(partPath_.c_str(), finalPath_.c_str()) != 0) error_ = errno;
  Check();
  const int closed = ::close(file_);
  file_ = -1;
  if (closed != 0) error_ = errno;
  Check();
}

}  // namespace tesk_audio
