#pragma once

#include <cmath>
#include <map>
#include <optional>
#include <vector>

#include "tests/support/tempo_songs.h"

// The conversions as they are defined: a map, walked from its first entry for every question.
class PlainScan {
 public:
  PlainScan(const std::vector<test_support::TempoAt>& tempos, unsigned short ppq, unsigned audioStart,
            long double rate)
      : audioStart_(audioStart), rate_(rate) {
    for (const auto& tempo : tempos)
      entries_[tempo.tick].secondsPerTick = tempo.microsecondsPerQuarter / 1e6 / ppq;
    const Entry atStart = std::prev(entries_.upper_bound(audioStart))->second;
    entries_.try_emplace(audioStart, atStart);
    long long total = 0;
    for (auto entry = entries_.find(audioStart); entry != entries_.end(); ++entry) {
      entry->second.samples = total;
      const auto next = std::next(entry);
      if (next == entries_.end()) break;
      total += SamplesOf_(next->first - entry->first, entry->second.secondsPerTick);
    }
  }

  long long TicksToSamples(unsigned tick) const {
    if (tick < audioStart_) return 0;
    auto entry = std::prev(entries_.upper_bound(tick));
    return entry->second.samples + SamplesOf_(tick - entry->first, entry->second.secondsPerTick);
  }
  double SamplesPerTick(long long sample) const {
    return static_cast<double>(static_cast<long double>(Find_(sample)->second.secondsPerTick) * rate_);
  }
  unsigned Integer(long long sample, unsigned* extraSamples) const {
    const auto entry = Find_(sample);
    const double delta = static_cast<double>(sample) - static_cast<double>(entry->second.samples);
    auto ticks = static_cast<unsigned>(std::floor(delta / SamplesPerTick(sample)));
    const auto startOf = [&](unsigned tick) {
      return entry->second.samples + SamplesOf_(tick, entry->second.secondsPerTick);
    };
    if (startOf(ticks + 1) == sample) ++ticks;
    *extraSamples = static_cast<unsigned>(sample - startOf(ticks));
    return entry->first + ticks;
  }
  unsigned Rounded(long long sample) const {
    const auto entry = Find_(sample);
    const double delta = static_cast<double>(sample) - static_cast<double>(entry->second.samples);
    return entry->first + static_cast<unsigned>(std::round(delta / SamplesPerTick(sample)));
  }

 private:
  struct Entry {
    long long samples = 0;
    double secondsPerTick = 0.0;
  };
  using Entries = std::map<unsigned, Entry>;

  Entries::const_iterator Find_(long long sample) const {
    auto entry = entries_.begin();
    while (entry != entries_.end() && entry->second.samples <= sample) ++entry;
    return std::prev(entry);
  }
  long long SamplesOf_(unsigned ticks, double secondsPerTick) const {
    const double seconds = secondsPerTick * static_cast<double>(ticks);
    return static_cast<long long>(roundl(static_cast<long double>(seconds) * rate_));
  }

  Entries entries_;
  unsigned audioStart_;
  long double rate_;
};
