#pragma once

#include <cstddef>
#include <list>

// A jump back: on arriving at `tick` go on at `targetTick`. A plain value.
struct LoopEvent {
  unsigned targetTick = 0;
  unsigned tick = 0;
  int limit = 0;               // how many times the jump is taken; 0: without limit; less than 0: never
  int done = 0;                // how many times it has been taken
  unsigned char kind = 0;      // 64: vamp; 65: repeat; others are other kinds
  unsigned char canceled = 0;  // bit 0: canceled

  bool is_vamp() const { return kind == 64; }
  bool is_repeat() const { return kind == 65; }
  bool GetCanceled() const { return (canceled & 1) != 0; }
};

// The loop events that lie ahead, in event order. Canceled events stay in the list and are passed over by
// every operation. No lock of its own: the show control's guards it.
class LoopEventList {
 public:
  // Events that are not canceled.
  std::size_t GetSize() const;
  // Throws std::logic_error "LoopEventList is empty".
  LoopEvent& GetFirstLoopEvent();
  bool HasVampOrRepeat() const;
  // Throws std::logic_error "LoopEventList does not have a vamp or repeat.".
  LoopEvent& GetFirstVampOrRepeat();

  // All events, canceled ones included.
  std::list<LoopEvent>& GetEvents() { return events_; }
  const std::list<LoopEvent>& GetEvents() const { return events_; }

 private:
  std::list<LoopEvent> events_;
};
