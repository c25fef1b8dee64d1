#include "reference_suite/audio/decode/library_words.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace tesk_audio {

namespace {

thread_local int insideLibraries = 0;

// The C library takes fewer bytes than it gave for an error, which it keeps in the stream: all that can be
// written is written.
ssize_t Pass(void* /*nothing*/, const char* words, size_t size) {
  if (insideLibraries > 0) return static_cast<ssize_t>(size);
  size_t done = 0;
  while (done < size) {
    const ssize_t written = ::write(STDERR_FILENO, words + done, size - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) break;
    done += static_cast<size_t>(written);
  }
  return static_cast<ssize_t>(done);
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
