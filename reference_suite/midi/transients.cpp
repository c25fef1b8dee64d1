#include "suite/midi/transients.h"

#include <cmath>
#include <stdexcept>

void Transients::SetTempoScale(double scale) {
  if (!std::isfinite(scale) || scale <= 0.0) {
    throw std::invalid_argument("A tempo scale must be a finite number greater than 0.");
  }
  tempoScale_.store(scale);
}

void Transients::SetTransposition(int semitones) {
  transposition_.store(semitones);
}
