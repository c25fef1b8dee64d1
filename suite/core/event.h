#pragma once

#include <ostream>

#include "exc/console/cout_buffer.h"

namespace cmn {

// One event of a song at one tick. Events are plain values; nothing here locks.
class TESKEvent {
 public:
  explicit TESKEvent(unsigned absTime) : absTime_(absTime) {}
  virtual ~TESKEvent() = default;
  TESKEvent(const TESKEvent&) = default;
  TESKEvent& operator=(const TESKEvent&) = default;

  // Ticks from the start of the song.
  unsigned abs_time() const { return absTime_; }

  // One of codes::EventCode.
  virtual int GetEventCode() const = 0;

  // One readable piece without a line end, for instance "Tempo(abs_time=960, ...)".
  virtual void WriteString(std::ostream& out) const = 0;
  void WriteString(exc::CoutBuffer& out) const;

 private:
  unsigned absTime_;
};

}  // namespace cmn
