#include "reference_suite/audio/decode/audio_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "reference_suite/audio/text/shown_path.h"
#include "suite/audio/errors.h"

namespace tesk_audio {

namespace {

// What is read at once: little at a new place, where a header may be all that is wanted, and more and more
// while reading goes on.
constexpr std::size_t kLeastBytes = 16 * 1024;
constexpr std::size_t kMostBytes = 256 * 1024;

std::string SystemText(int error) {
  return std::generic_category().message(error);
}

[[noreturn]] void ThrowCannotOpen(const std::string& shownPath, int error) {
  const char* cure = "Copy the file again.";
  if (error == ENOENT || error == ENOTDIR) cure = "Put the audio file there, or correct its name.";
  if (error == EACCES) cure = "Make the file and its folder readable for this user.";
  if (error == EMFILE || error == ENFILE) cure = "Close other programs or raise the limit of open files.";
  if (error == ELOOP) cure = "Replace the link, which leads in a circle, by the file itself.";
  throw TESKAudioError(shownPath + ": the file cannot be opened: " + SystemText(error) + ". " + cure);
}

void RequireRegularFile(const std::string& shownPath, const struct stat& status) {
  if (S_ISREG(status.st_mode)) return;
  const char* kind = "a special file";
  if (S_ISDIR(status.st_mode)) kind = "a folder";
  if (S_ISFIFO(status.st_mode)) kind = "a pipe";
  if (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode)) kind = "a device";
  if (S_ISSOCK(status.st_mode)) kind = "a socket";
  throw TESKAudioError(shownPath + ": this is " + kind +
                       ", not an audio file. Put the audio file itself there.");
}

}  // namespace

AudioFile::AudioFile(const std::string& path)
    : name_(ShownPath(path)), buffer_(new unsigned char[kMostBytes]) {
  struct stat status {};
  // Asked before opening: opening a device can already act on it.
  if (::stat(path.c_str(), &status) != 0) ThrowCannotOpen(name_, errno);
  RequireRegularFile(name_, status);
  // Without blocking: what stands there can have become a pipe in between.
  descriptor_ = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  if (descriptor_ < 0) ThrowCannotOpen(name_, errno);
  try {
    if (::fstat(descriptor_, &status) != 0) ThrowCannotOpen(name_, errno);
    RequireRegularFile(name_, status);
  } catch (...) {
    ::close(descriptor_);
    throw;
  }
  size_ = status.st_size;
}

AudioFile::AudioFile(Again /*tag*/, const AudioFile& opened)
    : name_(opened.name_),
      descriptor_(opened.descriptor_),
      owns_(false),
      size_(opened.size_),
      buffer_(new unsigned char[kMostBytes]) {}

AudioFile::~AudioFile() {
  if (owns_) ::close(descriptor_);
}

bool AudioFile::Seek(long long position) {
  if (position < 0) return false;
  position_ = position;
  return true;
}

std::size_t AudioFile::Read(void* buffer, std::size_t count) {
  auto* out = static_cast<unsigned char*>(buffer);
  std::size_t done = 0;
  while (done < count) {
    const bool buffered =
        position_ >= bufferStart_ && position_ < bufferStart_ + static_cast<long long>(bufferFill_);
    if (!buffered && !FillBuffer_()) break;
    const auto offset = static_cast<std::size_t>(position_ - bufferStart_);
    const std::size_t part = std::min(count - done, bufferFill_ - offset);
    std::memcpy(out + done, buffer_.get() + offset, part);
    done += part;
    position_ += static_cast<long long>(part);
  }
  return done;
}

bool AudioFile::FillBuffer_() {
  const bool goesOn = bufferFill_ > 0 && position_ == bufferStart_ + static_cast<long long>(bufferFill_);
  const std::size_t count = goesOn ? std::min(2 * lastCount_, kMostBytes) : kLeastBytes;
  bufferStart_ = position_;
  bufferFill_ = 0;
  lastCount_ = count;
  for (;;) {
    const ssize_t got = ::pread(descriptor_, buffer_.get(), count, position_);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) readError_ = errno;
    if (got > 0) bufferFill_ = static_cast<std::size_t>(got);
    return got > 0;
  }
}

void AudioFile::ThrowIfReadFailed() const {
  if (readError_ == 0) return;
  throw TESKAudioError(name_ + ": the file cannot be read: " + SystemText(readError_) +
                       ". Check the disk and copy the file again.");
}

std::string AudioFile::Head(std::size_t count) {
  std::string head(count, '\0');
  const long long position = position_;
  position_ = 0;
  head.resize(Read(head.data(), count));
  position_ = position;
  return head;
}

}  // namespace tesk_audio
