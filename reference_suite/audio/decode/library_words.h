#pragma once

namespace tesk_audio {

// libsndfile leaves MP3 to a library that writes notes about damaged files on the C library's standard error,
// and passes no wish to be quiet on to it. What matters of them our own warnings say.
//
// Drops those notes from here on, in the whole process, by putting a stream of ours in the place of `stderr`:
// all that is written there otherwise goes to standard error as before, unbuffered. For the program that
// standard error belongs to; call it once, before there are other threads. Does nothing where there is no
// memory for it.
void KeepLibrariesQuiet();

// This thread is inside a library that decodes, as long as this lives. Threads: ANY.
class InsideLibrary {
 public:
  InsideLibrary();
  ~InsideLibrary();
  InsideLibrary(const InsideLibrary&) = delete;
  InsideLibrary& operator=(const InsideLibrary&) = delete;
};

}  // namespace tesk_audio
