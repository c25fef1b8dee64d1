#include "host/session/standard_error.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <iostream>
#include <mutex>
#include <optional>
#include <streambuf>
#include <string_view>

#include "host/session/interrupts.h"

namespace orbel::host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kLastWaitMilliseconds = 1000;

// Never waits once it is open in its own right.
std::atomic<int> file{STDERR_FILENO};
static_assert(std::atomic<int>::is_always_lock_free, "signal handlers read it");

// Writes to a terminal or a pipe wait in the system, where an interrupt would not end them, unless the
// descriptor says otherwise; and that is shared with whoever else has it. So the same thing is opened once
// more. Where that is refused the original stays.
int OpenWithoutWaiting() {
  struct stat status {};
  if (::fstat(STDERR_FILENO, &status) != 0) return STDERR_FILENO;
  if (!S_ISFIFO(status.st_mode) && ::isatty(STDERR_FILENO) != 1) return STDERR_FILENO;
  const int opened = ::open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  return opened < 0 ? STDERR_FILENO : opened;
}

bool HasRoomWithin(int milliseconds) {
  pollfd out{file, POLLOUT, 0};
  return ::poll(&out, 1, milliseconds) > 0;
}

// As ::write; for want of room EAGAIN. A pipe that has room takes as much as this.
ssize_t WriteSome(const char* words, std::size_t count) {
  constexpr std::size_t kAtOnce = 512;
  if (HasRoomWithin(0)) return ::write(file, words, std::min(count, kAtOnce));
  errno = EAGAIN;
  return -1;
}

// Allocates nothing: it also tells that there is no memory.
class StandardError : public std::streambuf {
 public:
  bool IsEmpty() {
    const std::lock_guard lock(mutex_);
    SendKept_();
    return length_ == 0;
  }

  void LetNobodyWait() {
    const std::lock_guard lock(mutex_);
    nobodyWaits_ = true;
  }

  void WaitOnceMore() {
    const std::lock_guard lock(mutex_);
    nobodyWaits_ = false;
    Hurry_();
    SendKept_();
  }

 protected:
  std::streamsize xsputn(const char* text, std::streamsize count) override {
    const std::lock_guard lock(mutex_);
    Put_({text, static_cast<std::size_t>(count)});
    return count;
  }

  int_type overflow(int_type letter) override {
    const std::lock_guard lock(mutex_);
    const char text = traits_type::to_char_type(letter);
    if (!traits_type::eq_int_type(letter, traits_type::eof())) Put_({&text, 1});
    return traits_type::not_eof(letter);
  }

  int sync() override {
    const std::lock_guard lock(mutex_);
    SendKept_();
    return 0;
  }

 private:
  void Put_(std::string_view text) {
    SendKept_();
    if (length_ == 0) text.remove_prefix(Send_(text));
    if (text.size() > kept_.size() - length_) return;
    std::copy(text.begin(), text.end(), kept_.begin() + static_cast<std::ptrdiff_t>(length_));
    length_ += text.size();
  }

  void SendKept_() {
    const std::size_t done = Send_({kept_.data(), length_});
    std::copy(kept_.begin() + static_cast<std::ptrdiff_t>(done),
              kept_.begin() + static_cast<std::ptrdiff_t>(length_), kept_.begin());
    length_ -= done;
  }

  // How much of it is done with: gone out, or never to go, like words to a terminal that is no more.
  std::size_t Send_(std::string_view text) {
    std::size_t done = 0;
    while (done < text.size()) {
      const ssize_t written = WriteSome(text.data() + done, text.size() - done);
      if (written >= 0) {
        done += static_cast<std::size_t>(written);
      } else if (errno == EAGAIN) {
        if (!WaitForRoom_()) break;
      } else if (errno != EINTR) {
        return text.size();
      }
    }
    return done;
  }

  // False when it is not worth while.
  bool WaitForRoom_() {
    if (nobodyWaits_) return false;
    if (InterruptCount() > 0) Hurry_();
    if (lastWait_ && Clock::now() >= *lastWait_) return false;
    constexpr int kLookMilliseconds = 50;
    HasRoomWithin(kLookMilliseconds);
    return true;
  }

  void Hurry_() {
    if (!lastWait_) lastWait_ = Clock::now() + std::chrono::milliseconds(kLastWaitMilliseconds);
  }

  std::mutex mutex_;
  std::array<char, 65536> kept_{};
  std::size_t length_ = 0;
  bool nobodyWaits_ = false;
  std::optional<Clock::time_point> lastWait_;  // until when, once the program is on its way to its end
};

// Never destroyed: loader threads may outlive main() and still write.
StandardError& TheStandardError() {
  static StandardError& error = *new StandardError;
  return error;
}

}  // namespace

void TakeStandardError() {
  file = OpenWithoutWaiting();
  std::cerr.rdbuf(&TheStandardError());
}

bool EverythingIsSaid() {
  return TheStandardError().IsEmpty();
}

void SayAtOnce(const char* words, std::size_t count) noexcept {
  if (!HasRoomWithin(kLastWaitMilliseconds)) return;
  // Where nobody can read the words any more the program ends without them.
  [[maybe_unused]] const ssize_t written = ::write(file, words, count);
}

NobodyWaitsForReaders::NobodyWaitsForReaders() {
  TheStandardError().LetNobodyWait();
}

NobodyWaitsForReaders::~NobodyWaitsForReaders() {
  TheStandardError().WaitOnceMore();
}

}  // namespace orbel::host
