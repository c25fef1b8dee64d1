#include "host/session/results.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <streambuf>

#include "host/session/patient_writing.h"

namespace orbel::host {
namespace {

class StandardOutput : public std::streambuf {
 public:
  StandardOutput() { setp(kept_.data(), kept_.data() + kept_.size()); }

 protected:
  int_type overflow(int_type letter) override {
    if (sync() != 0) return traits_type::eof();
    if (!traits_type::eq_int_type(letter, traits_type::eof())) sputc(traits_type::to_char_type(letter));
    return traits_type::not_eof(letter);
  }

  int sync() override {
    const char* from = pbase();
    while (from < pptr()) {
      const ssize_t written = WriteSome(file_, from, static_cast<std::size_t>(pptr() - from));
      if (written >= 0) {
        from += written;
      } else if (errno != EINTR && (errno != EAGAIN || !patience_.WaitForRoom(file_))) {
        break;
      }
    }
    const bool isWritten = from == pptr();
    setp(kept_.data(), kept_.data() + kept_.size());
    return isWritten ? 0 : -1;
  }

 private:
  const int file_ = OpenWithoutWaiting(STDOUT_FILENO);
  std::array<char, 4096> kept_{};
  Patience patience_;
};

}  // namespace

std::ostream& Results() {
  static StandardOutput& output = *new StandardOutput;
  static std::ostream& results = *new std::ostream(&output);
  return results;
}

}  // namespace orbel::host
