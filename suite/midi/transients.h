#pragma once

#include <atomic>

// What the performer changes while playing: a tempo scale and a transposition on top of the change log's.
// Threads: ANY; each value is read and written as a whole, without a lock. A change applies from the next
// read on.
class Transients {
 public:
  // 1.0: as written. Values that are not finite or not greater than 0 throw std::invalid_argument.
  void SetTempoScale(double scale);
  double GetTempoScale() const { return tempoScale_.load(); }

  // Semitones; 0: as written.
  void SetTransposition(int semitones);
  int GetTransposition() const { return transposition_.load(); }

 private:
  std::atomic<double> tempoScale_{1.0};
  std::atomic<int> transposition_{0};
};
