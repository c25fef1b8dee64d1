#pragma once

#include <ostream>
#include <utility>

#include "Sources/types.h"

// What is known of the tempo from one tick on, and the sample at which that tick begins. Tick time and tempo
// scale count as known once they were set; until then they read as the defaults. A plain value.
class CombinedTempo {
 public:
  // Seconds per tick at tempo scale 1.
  double TickTime() const { return tickTime_; }
  void TickTime(double secondsPerTick) {
    tickTime_ = secondsPerTick;
    hasTickTime_ = true;
  }
  bool HasTickTime() const { return hasTickTime_; }

  // The speed of playback from here on, 1.0 as recorded.
  double TempoScale() const { return tempoScale_; }
  void TempoScale(double scale) {
    tempoScale_ = scale;
    hasTempoScale_ = true;
  }
  bool HasTempoScale() const { return hasTempoScale_; }

  // The sample at which the entry's tick begins.
  SampleCount Samples() const { return samples_; }
  void Samples(SampleCount samples) { samples_ = samples; }

  // With the tempo scale.
  double SecondsPerTick() const { return tickTime_ / tempoScale_; }

 private:
  bool hasTempoScale_ = false;
  bool hasTickTime_ = false;
  SampleCount samples_ = 0;
  double tempoScale_ = 1.0;
  double tickTime_ = 0.001;
};

// "CombinedTempo(tick_time=0.0005, tempo_scale=1, samples=21168)"
std::ostream& operator<<(std::ostream& out, const CombinedTempo& tempo);

// A tick, a blank and its tempo. Takes the entries of a map, too.
std::ostream& operator<<(std::ostream& out, const std::pair<TickIndex, CombinedTempo>& entry);
