#include "reference_suite/audio/decode/library_words.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace tesk_audio {

namespace {

thread_local int insideLibraries = 0;

ssize_t Pass(void* /*nothing*/, const char* words, size_t size) {
  if (insideLibraries > 0) return static_cast<ssize_t>(size);
  ssize_t written = -1;
  do written = ::write(STDERR_FILENO, words, size);
  while (written < 0 && errno == EINTR);
  return written < 0 ? 0 : written;  // so are errors told here
}

}  // namespace

void KeepLibrariesQuiet() {
  FILE* const words = ::fopencookie(nullptr, "w", {nullptr, Pass, nullptr, nullptr});
  if (words == nullptr) return;
  ::setvbuf(words, nullptr, _IONBF, 0);
  stderr = words;
}

InsideLibrary::InsideLibrary() {
  ++insideLibraries;
}

InsideLibrary::~InsideLibrary() {
  --insideLibraries;
}

}  // namespace tesk_audio
