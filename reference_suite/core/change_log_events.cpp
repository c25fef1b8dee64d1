#include "suite/core/change_log_events.h"

#include "reference_suite/core/event_text.h"
#include "reference_suite/core/one_line.h"

namespace CL {

using reference_core::EventText;

void PairedEvent::WriteString(std::ostream& out) const {
  out << EventText(*this).With("end_time", endTime_).With("line", line_).Get();
}

void Caesura::WriteString(std::ostream& out) const {
  out << EventText(*this).With("line", line_).Get();
}

void TempoScale::WriteString(std::ostream& out) const {
  out << EventText(*this).With("scale", scale_).With("line", line_).Get();
}

void Transpose::WriteString(std::ostream& out) const {
  out << EventText(*this).With("semitones", semitones_).With("line", line_).Get();
}

// A name is free text from a file, and the piece must stay one line.
void Marker::WriteString(std::ostream& out) const {
  out << EventText(*this)
             .With("name", "\"" + reference_core::OneLine(name_) + "\"")
             .With("line", line_)
             .Get();
}

}  // namespace CL
