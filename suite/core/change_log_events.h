#pragma once

#include <ostream>
#include <string>
#include <utility>

#include "suite/core/event.h"
#include "suite/core/event_codes.h"

// The events of a song's change log: what the performers have decided on top of the recording. Each one
// keeps the line of the file in which it was written (0 when it comes from nowhere), for messages.
namespace CL {

// An event that has two ends: [abs_time(), GetEndTime()).
class PairedEvent : public cmn::TESKEvent {
 public:
  PairedEvent(unsigned absTime, unsigned endTime, int code, int line)
      : TESKEvent(absTime), endTime_(endTime), code_(code), line_(line) {}

  // Ticks from the start of the song. For a cut, the tick at which playback goes on.
  unsigned GetEndTime() const { return endTime_; }
  int GetLine() const { return line_; }

  int GetEventCode() const override { return code_; }
  void WriteString(std::ostream& out) const override;
  using TESKEvent::WriteString;

 private:
  unsigned endTime_;
  int code_;
  int line_;
};

// Where a performer's go leaves a vamp.
enum class VampExit { EndOfPass, NextBar, NextBeat };

// A vamp, a repeat or a safety: play [abs_time(), GetEndTime()) more than once.
class Loop : public PairedEvent {
 public:
  static constexpr int evt_code = codes::kRepeat;
  // `code`: kVamp, kRepeat or kSafety. `passes`: how often the passage is played in all; 0 for a vamp (no
  // limit), 1 for a safety (more when asked for), at least 2 for a repeat.
  Loop(unsigned from, unsigned to, int code, int passes, VampExit exit, int line)
      : PairedEvent(from, to, code, line), passes_(passes), exit_(exit) {}

  int GetPasses() const { return passes_; }
  VampExit GetExit() const { return exit_; }

 private:
  int passes_;
  VampExit exit_;
};

// On reaching abs_time() playback goes on at GetEndTime().
class Cut : public PairedEvent {
 public:
  static constexpr int evt_code = codes::kCut;
  Cut(unsigned from, unsigned to, int line) : PairedEvent(from, to, evt_code, line) {}
};

// Metronome clicks in [abs_time(), GetEndTime()).
class Click : public PairedEvent {
 public:
  static constexpr int evt_code = codes::kClick;
  Click(unsigned from, unsigned to, int line) : PairedEvent(from, to, evt_code, line) {}
};

// On reaching abs_time() playback stops and waits for the performer.
class Caesura : public cmn::TESKEvent {
 public:
  static constexpr int evt_code = codes::kCaesura;
  Caesura(unsigned absTime, int line) : TESKEvent(absTime), line_(line) {}

  int GetLine() const { return line_; }
  int GetEventCode() const override { return evt_code; }
  void WriteString(std::ostream& out) const override;
  using TESKEvent::WriteString;

 private:
  int line_;
};

// The tempo scale in force from its tick on: 1.0 as recorded, 0.25 to 4.0.
class TempoScale : public cmn::TESKEvent {
 public:
  static constexpr int evt_code = codes::kTempoScale;
  TempoScale(unsigned absTime, double scale, int line) : TESKEvent(absTime), scale_(scale), line_(line) {}

  double GetScale() const { return scale_; }
  int GetLine() const { return line_; }
  int GetEventCode() const override { return evt_code; }
  void WriteString(std::ostream& out) const override;
  using TESKEvent::WriteString;

 private:
  double scale_;
  int line_;
};

// The transposition in force from its tick on, in semitones, -24 to 24.
class Transpose : public cmn::TESKEvent {
 public:
  static constexpr int evt_code = codes::kTranspose;
  Transpose(unsigned absTime, int semitones, int line)
      : TESKEvent(absTime), semitones_(semitones), line_(line) {}

  int GetSemitones() const { return semitones_; }
  int GetLine() const { return line_; }
  int GetEventCode() const override { return evt_code; }
  void WriteString(std::ostream& out) const override;
  using TESKEvent::WriteString;

 private:
  int semitones_;
  int line_;
};

// A named place.
class Marker : public cmn::TESKEvent {
 public:
  static constexpr int evt_code = codes::kMarker;
  Marker(unsigned absTime, std::string name, int line)
      : TESKEvent(absTime), name_(std::move(name)), line_(line) {}

  const std::string& GetName() const { return name_; }
  int GetLine() const { return line_; }
  int GetEventCode() const override { return evt_code; }
  void WriteString(std::ostream& out) const override;
  using TESKEvent::WriteString;

 private:
  std::string name_;
  int line_;
};

}  // namespace CL
