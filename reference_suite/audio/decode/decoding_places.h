#pragma once

#include <atomic>

namespace tesk_audio {

// How many threads decode at the same time, in the whole process: one for each file at least, and no more
// than the machine has cores as long as files do not outnumber them. The file whose loader was started first
// gets the cores, also when a later one happens to run first.
//
// Threads    any. Locks      one of its own, innermost.
class DecodingPlaces {
 public:
  // Takes a place for the calling loader and one for each of `cores` that no earlier decoding has. `order`:
  // whose number is smaller was started first; the system numbers threads that way.
  explicit DecodingPlaces(int cores, long order = NumberOfThisThread());
  ~DecodingPlaces();
  DecodingPlaces(const DecodingPlaces&) = delete;
  DecodingPlaces& operator=(const DecodingPlaces&) = delete;

  // How many threads may decode. Final: until then a loader that was started earlier can take all but one.
  int Claim();
  // Gives back what stands over `count`, which is at least 1.
  void Keep(int count);
  // For the threads that decode: less weight than the thread that asked for places, and far less while
  // earlier decodings have all cores. Can grow at any time.
  int NiceValue() const;

  static long NumberOfThisThread();

 private:
  const long order_;
  const int ownNiceValue_;
  std::atomic<bool> isLate_{false};
  int count_ = 1;         // with the lock
  bool claimed_ = false;  // with the lock
};

// Cores that this process may use.
int CoreCount();

}  // namespace tesk_audio
