#include "reference_suite/audio/text/keep_words.h"

#include <new>

namespace tesk_audio {

namespace {

// Short enough to stand in a string without memory.
constexpr const char* kNoMemory = "no memory left";

}  // namespace

void KeepWords(std::string* words, const char* text) noexcept {
  try {
    *words = text;
  } catch (const std::bad_alloc&) {
    *words = kNoMemory;
  }
}

void KeepWords(std::string* words, const std::exception& error) noexcept {
  const bool isMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
  KeepWords(words, isMemory ? kNoMemory : error.what());
}

}  // namespace tesk_audio
