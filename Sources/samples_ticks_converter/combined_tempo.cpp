#include "Sources/samples_ticks_converter/combined_tempo.h"

std::ostream& operator<<(std::ostream& out, const CombinedTempo& tempo) {
  return out << "CombinedTempo(tick_time=" << tempo.TickTime() << ", tempo_scale=" << tempo.TempoScale()
             << ", samples=" << tempo.Samples() << ")";
}

std::ostream& operator<<(std::ostream& out, const std::pair<TickIndex, CombinedTempo>& entry) {
  return out << entry.first << " " << entry.second;
}
