#pragma once

namespace tesk_audio {

// How many threads decode at the same time, in the whole process: one for each file at least, and no more
// than the machine has cores as long as files do not outnumber them. Whoever comes first gets the cores.
//
// Threads    any. Locks      none.
class DecodingPlaces {
 public:
  // Takes a place for the calling decoding, and one for each of `cores` that no decoding has yet.
  explicit DecodingPlaces(int cores);
  ~DecodingPlaces();
  DecodingPlaces(const DecodingPlaces&) = delete;
  DecodingPlaces& operator=(const DecodingPlaces&) = delete;

  int Count() const { return count_; }
  // Gives back what stands over `count`, which is at least 1.
  void Keep(int count);
  // For the threads that decode: less weight than the thread that asked for places, and far less when every
  // core had its decoding already.
  int NiceValue() const { return niceValue_; }

 private:
  int count_ = 1;
  int niceValue_ = 0;
};

// Cores that this process may use.
int CoreCount();

}  // namespace tesk_audio
