#pragma once

#include <cstdint>
#include <ostream>

#include "suite/core/event.h"
#include "suite/core/event_codes.h"

// The events of a song's timeline.
namespace TL {

// A tempo in force from its tick on.
class Tempo : public cmn::TESKEvent {
 public:
  static constexpr int evt_code = codes::kTempo;
  // `microsecondsPerQuarter`: whole microseconds, greater than 0.
  Tempo(unsigned absTime, unsigned microsecondsPerQuarter)
      : TESKEvent(absTime), microsecondsPerQuarter_(microsecondsPerQuarter) {}

  unsigned GetMicrosecondsPerQuarter() const { return microsecondsPerQuarter_; }

  // Seconds per tick at the given PPQ. Both divisions are double, in this order: the timing of every sample
  // depends on it.
  double tick_time(unsigned short ppq) const {
    return (static_cast<double>(microsecondsPerQuarter_) / 1000000.0) / static_cast<double>(ppq);
  }

  int GetEventCode() const override { return evt_code; }
  void WriteString(std::ostream& out) const override;
  using TESKEvent::WriteString;

 private:
  unsigned microsecondsPerQuarter_;
};

// A time signature in force from its tick on: `numerator` beats of 1/`denominator` notes.
class Meter : public cmn::TESKEvent {
 public:
  static constexpr int evt_code = codes::kMeter;
  Meter(unsigned absTime, unsigned numerator, unsigned denominator)
      : TESKEvent(absTime), numerator_(numerator), denominator_(denominator) {}

  unsigned GetNumerator() const { return numerator_; }
  unsigned GetDenominator() const { return denominator_; }

  int GetEventCode() const override { return evt_code; }
  void WriteString(std::ostream& out) const override;
  using TESKEvent::WriteString;

 private:
  unsigned numerator_;
  unsigned denominator_;
};

// A key signature: -7 (flats) to 7 (sharps).
class Key : public cmn::TESKEvent {
 public:
  static constexpr int evt_code = codes::kKey;
  Key(unsigned absTime, int sharps, bool minor) : TESKEvent(absTime), sharps_(sharps), minor_(minor) {}

  int GetSharps() const { return sharps_; }
  bool IsMinor() const { return minor_; }

  int GetEventCode() const override { return evt_code; }
  void WriteString(std::ostream& out) const override;
  using TESKEvent::WriteString;

 private:
  int sharps_;
  bool minor_;
};

// A page of the printed part, from its tick on.
class PageNum : public cmn::TESKEvent {
 public:
  static constexpr int evt_code = codes::kPageNum;
  PageNum(unsigned absTime, unsigned number) : TESKEvent(absTime), number_(number) {}

  unsigned GetNumber() const { return number_; }

  int GetEventCode() const override { return evt_code; }
  void WriteString(std::ostream& out) const override;
  using TESKEvent::WriteString;

 private:
  unsigned number_;
};

// One bar: its number, its beats and how long a beat is. Bars follow each other without a gap up to the end
// of the MIDI; a meter change starts a new bar. Neither a bar nor a beat need be a whole number of ticks:
// what is left over is kept in sixteenths of a tick, which is exact for every note value down to a
// sixty-fourth.
class BarsBeats : public cmn::TESKEvent {
 public:
  static constexpr int evt_code = codes::kBarsBeats;
  // `startSixteenths`: how much later than its tick the bar begins, 0 to 15. `beatSixteenths`: how much
  // longer than `ticksPerBeat` a beat is.
  BarsBeats(unsigned absTime, int bar, unsigned beats, unsigned ticksPerBeat, unsigned startSixteenths = 0,
            unsigned beatSixteenths = 0)
      : TESKEvent(absTime),
        bar_(bar),
        beats_(beats),
        ticksPerBeat_(ticksPerBeat),
        startSixteenths_(startSixteenths),
        beatSixteenths_(beatSixteenths) {}

  int GetBar() const { return bar_; }
  unsigned GetBeats() const { return beats_; }
  // Rounded down.
  unsigned GetTicksPerBeat() const { return ticksPerBeat_; }

  // In sixteenths of a tick, from the start of the song.
  std::uint64_t GetStartSixteenths() const { return std::uint64_t{16} * abs_time() + startSixteenths_; }
  std::uint64_t GetSixteenthsPerBeat() const { return std::uint64_t{16} * ticksPerBeat_ + beatSixteenths_; }

  int GetEventCode() const override { return evt_code; }
  void WriteString(std::ostream& out) const override;
  using TESKEvent::WriteString;

 private:
  int bar_;
  unsigned beats_;
  unsigned ticksPerBeat_;
  unsigned startSixteenths_;
  unsigned beatSixteenths_;
};

}  // namespace TL
