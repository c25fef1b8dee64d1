#include "suite/core/timeline_events.h"

#include "reference_suite/core/event_text.h"

namespace TL {

using reference_core::EventText;

void Tempo::WriteString(std::ostream& out) const {
  out << EventText(*this).With("microseconds_per_quarter", microsecondsPerQuarter_).Get();
}

void Meter::WriteString(std::ostream& out) const {
  out << EventText(*this)
             .With("meter", std::to_string(numerator_) + "/" + std::to_string(denominator_))
             .Get();
}

void Key::WriteString(std::ostream& out) const {
  out << EventText(*this).With("sharps", sharps_).With("mode", minor_ ? "minor" : "major").Get();
}

void PageNum::WriteString(std::ostream& out) const {
  out << EventText(*this).With("number", number_).Get();
}

void BarsBeats::WriteString(std::ostream& out) const {
  out << EventText(*this).With("bar", bar_).With("beats", beats_).With("ticks_per_beat", ticksPerBeat_).Get();
}

}  // namespace TL
