#include "host/session/at_work.h"

#include <algorithm>
#include <array>
#include <exception>

#include "host/session/shown_text.h"

namespace orbel::host {
namespace {

std::array<char, 1024> words;
std::size_t length = 0;
std::size_t lengthOfShow = 0;

// From `begin` on. What does not fit is left out; false when the text cannot be made any more: what was noted
// before is what is known.
template <typename MakeText>
bool WriteIfThereIsMemory(std::size_t begin, MakeText makeText) noexcept {
  try {
    const std::string text = makeText();
    const std::size_t count = std::min(text.size(), words.size() - begin);
    std::copy_n(text.begin(), count, words.begin() + static_cast<std::ptrdiff_t>(begin));
    length = begin + count;
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

void NoteShow(const std::string& path) noexcept {
  if (WriteIfThereIsMemory(0, [&] { return Shown(path); })) lengthOfShow = length;
}

void NoteSong(const std::string& number, const std::string& file) noexcept {
  length = lengthOfShow;
  if (number.empty()) return;
  WriteIfThereIsMemory(lengthOfShow, [&] { return ": song " + Shown(number) + " (" + Shown(file) + ")"; });
}

std::string_view AtWork() noexcept {
  return {words.data(), length};
}

AtSong::AtSong(const std::string& number, const std::string& file) noexcept
    : exceptions_(std::uncaught_exceptions()) {
  NoteSong(number, file);
}

AtSong::~AtSong() {
  if (std::uncaught_exceptions() == exceptions_) NoteSong("", "");
}

}  // namespace orbel::host
