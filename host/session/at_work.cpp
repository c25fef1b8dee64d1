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

// What does not fit, or cannot be made any more, is left out.
template <typename MakeText>
void AppendIfThereIsMemory(MakeText makeText) noexcept {
  try {
    const std::string text = makeText();
    const std::size_t count = std::min(text.size(), words.size() - length);
    std::copy_n(text.begin(), count, words.begin() + static_cast<std::ptrdiff_t>(length));
    length += count;
  } catch (const std::exception&) {
    // What was noted before is what is known.
  }
}

}  // namespace

void NoteShow(const std::string& path) noexcept {
  length = 0;
  AppendIfThereIsMemory([&] { return Shown(path); });
  lengthOfShow = length;
}

void NoteSong(const std::string& number, const std::string& file) noexcept {
  length = lengthOfShow;
  if (number.empty()) return;
  AppendIfThereIsMemory([&] { return ": song " + Shown(number) + " (" + Shown(file) + ")"; });
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
