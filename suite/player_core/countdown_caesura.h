#pragma once

// A caesura that still lies ahead, or at the control position.
class CountdownCaesura {
 public:
  explicit CountdownCaesura(unsigned tickIndex) : tickIndex_(tickIndex) {}
  unsigned GetTickIndex() const { return tickIndex_; }

 private:
  unsigned tickIndex_;
};
