#include "reference_suite/audio/encode/part_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <system_error>

#include "exc/file/unfinished_file_error.h"
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

[[noreturn]] void FailToWrite(const std::string& path, int code, long long missing) {
  std::string text = ShownPath(path) + ": cannot be written: " + std::generic_category().message(code);
  if (missing > 0) {
    text += "; " + std::to_string(missing) + " bytes and what follows them are missing, so nothing was kept";
  }
  throw SoundFileError(text + ". Choose another place, or make room.");
}

[[noreturn]] void FailToWrite(const std::string& path, const exc::UnfinishedFileError& error) {
  if (error.GetCode() != 0) FailToWrite(path, error.GetCode(), 0);
  throw SoundFileError(ShownPath(path + ": cannot be written: " + error.what()) + ".");
}

std::unique_ptr<exc::UnfinishedFile> Begin(const std::string& path) {
  RequireNameForAFile(path);
  try {
    return std::make_unique<exc::UnfinishedFile>(path);
  } catch (const exc::UnfinishedFileError& error) {
    FailToWrite(path, error);
  }
}

}  // namespace

PartFile::PartFile(const std::string& path) : path_(path), file_(Begin(path)) {}

long long PartFile::Write(const void* bytes, long long count) {
  long long done = 0;
  while (error_ == 0 && done < count) {
    const ssize_t written = ::write(file_->GetDescriptor(), static_cast<const char*>(bytes) + done,
                                    static_cast<std::size_t>(count - done));
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
    const ssize_t got = ::read(file_->GetDescriptor(), static_cast<char*>(bytes) + done,
                               static_cast<std::size_t>(count - done));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    done += got;
  }
  return done;
}

long long PartFile::Seek(long long offset, int whence) {
  return ::lseek(file_->GetDescriptor(), static_cast<off_t>(offset), whence);
}

long long PartFile::GetLength() const {
  struct stat status {};
  return ::fstat(file_->GetDescriptor(), &status) == 0 ? status.st_size : -1;
}

void PartFile::Check() const {
  if (error_ != 0) FailToWrite(path_, error_, missing_);
}

void PartFile::Commit() {
  Check();
  try {
    file_->Commit();
  } catch (const exc::UnfinishedFileError& error) {
    error_ = error.GetCode();
    FailToWrite(path_, error);
  }
}

}  // namespace tesk_audio
