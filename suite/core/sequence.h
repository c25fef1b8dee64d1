#pragma once

#include <cstddef>
#include <ostream>
#include <utility>
#include <vector>

#include "exc/console/cout_buffer.h"
#include "suite/core/event_codes.h"

namespace cmn {

// What every sequence of events can tell, whatever its events are.
class TESKSequence {
 public:
  virtual ~TESKSequence() = default;

  virtual int GetEventCode() const = 0;
  virtual std::size_t GetSize() const = 0;

  // The name of the events, then "Sequence(code=", the code, ", event count = ", the count and ")".
  void WriteString(std::ostream& out) const;
  void WriteString(exc::CoutBuffer& out) const;
};

// The events of one kind, in the order in which they were added: ascending ticks, and at one tick the order
// in which they were written. T has a static `evt_code`.
template <typename T>
class SequenceTemplate : public TESKSequence {
 public:
  using const_iterator = typename std::vector<T>::const_iterator;

  SequenceTemplate() = default;
  explicit SequenceTemplate(std::vector<T> events) : events_(std::move(events)) {}

  int GetEventCode() const override { return T::evt_code; }
  std::size_t GetSize() const override { return events_.size(); }

  const_iterator begin() const { return events_.begin(); }
  const_iterator end() const { return events_.end(); }
  const T& operator[](std::size_t index) const { return events_[index]; }

  void Add(T event) { events_.push_back(std::move(event)); }

 private:
  std::vector<T> events_;
};

}  // namespace cmn
