#include "host/session/standard_error.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <iostream>
#include <mutex>
#include <streambuf>
#include <string_view>

#include "host/session/patient_writing.h"

namespace orbel::host {
namespace {

// Never waits once it is open in its own right.
std::atomic<int> file{STDERR_FILENO};
static_assert(std::atomic<int>::is_always_lock_free, "signal handlers read it");

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
    patience_.Hurry();
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
      const ssize_t written = WriteSome(file, text.data() + done, text.size() - done);
      if (written >= 0) {
        done += static_cast<std::size_t>(written);
      } else if (errno == EAGAIN) {
        if (nobodyWaits_ || !patience_.WaitForRoom(file)) break;
      } else if (errno != EINTR) {
        return text.size();
      }
    }
    return done;
  }

  std::mutex mutex_;
  std::array<char, 65536> kept_{};
  std::size_t length_ = 0;
  bool nobodyWaits_ = false;
  Patience patience_;
};

// Never destroyed: loader threads may outlive main() and still write.
StandardError& TheStandardError() {
  static StandardError& error = *new StandardError;
  return error;
}

}  // namespace

void TakeStandardError() {
  file = OpenWithoutWaiting(STDERR_FILENO);
  std::cerr.rdbuf(&TheStandardError());
}

bool EverythingIsSaid() {
  return TheStandardError().IsEmpty();
}

void SayAtOnce(const char* words, std::size_t count) noexcept {
  if (!HasRoomWithin(file, Patience::kLastWaitMilliseconds)) return;
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
