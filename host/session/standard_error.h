#pragma once

#include <cstddef>

namespace orbel::host {

// Standard error, as std::cerr writes to it: a write that fails is forgotten and the next one is tried, and
// nobody who does not read can hold the program up for good. What finds no room waits: the writer with it,
// until an interrupt comes; while a show plays, the words alone.
//
// Threads    ANY writes; what is declared here is HOST, but for SayAtOnce.
// Locks      one of its own, innermost.

// From here on std::cerr. Call it before there are other threads.
void TakeStandardError();

// Whether all that was said has gone out, as far as it ever will. Sends what there is room for now.
bool EverythingIsSaid();

// `words`, past those that wait; they are given a second to find room. For signal handlers.
void SayAtOnce(const char* words, std::size_t count) noexcept;

// While it lives nobody waits for room: the words do, up to 64 KiB of them. What comes then is lost.
// Afterwards all that is said until the program ends has a second to find room.
class NobodyWaitsForReaders {
 public:
  NobodyWaitsForReaders();
  ~NobodyWaitsForReaders();
  NobodyWaitsForReaders(const NobodyWaitsForReaders&) = delete;
  NobodyWaitsForReaders& operator=(const NobodyWaitsForReaders&) = delete;
};

}  // namespace orbel::host
