#include "host/session/script_runner.h"

#include <algorithm>
#include <utility>

namespace orbel::host {

ScriptRunner::ScriptRunner(std::vector<ScriptLine> lines) {
  for (ScriptLine& line : lines) entries_.push_back({std::move(line), State::Open, std::nullopt, 0});
}

void ScriptRunner::OnSong(const FindTick& find, TickIndex tick) {
  for (Entry& entry : entries_) {
    entry.tick.reset();
    if (entry.line.moment == MomentKind::At) entry.tick = find(entry.line.position);
    if (entry.tick == tick) Arrive_(&entry);
  }
  tick_ = tick;
}

void ScriptRunner::Land(TickIndex tick) {
  Move_(tick, true);
}

void ScriptRunner::PlayTo(TickIndex tick) {
  Move_(tick, false);
}

void ScriptRunner::Move_(TickIndex tick, bool landing) {
  for (Entry& entry : entries_) {
    if (!entry.tick) continue;
    const bool passed = tick_ < *entry.tick && *entry.tick <= tick;
    if (passed || (landing && *entry.tick == tick)) Arrive_(&entry);
  }
  tick_ = tick;
}

void ScriptRunner::Arrive_(Entry* entry) {
  ++entry->arrivals;
  if (entry->state == State::Open && entry->arrivals == entry->line.pass) entry->state = State::Due;
}

void ScriptRunner::SetTime(double seconds) {
  for (Entry& entry : entries_) {
    const bool due = entry.line.moment == MomentKind::Time && entry.line.seconds <= seconds;
    if (due && entry.state == State::Open) entry.state = State::Due;
  }
}

std::vector<ScriptLine> ScriptRunner::TakeDue() {
  std::vector<ScriptLine> due;
  for (Entry& entry : entries_) {
    if (entry.state != State::Due) continue;
    entry.state = State::Done;
    due.push_back(entry.line);
  }
  return due;
}

std::optional<ScriptLine> ScriptRunner::TakeWaiting() {
  for (Entry& entry : entries_) {
    if (entry.line.moment != MomentKind::Waiting || entry.state != State::Open) continue;
    entry.state = State::Done;
    return entry.line;
  }
  return std::nullopt;
}

bool ScriptRunner::HasWaiting() const {
  return std::any_of(entries_.begin(), entries_.end(), [](const Entry& entry) {
    return entry.line.moment == MomentKind::Waiting && entry.state == State::Open;
  });
}

std::optional<double> ScriptRunner::NextTime() const {
  std::optional<double> next;
  for (const Entry& entry : entries_) {
    if (entry.line.moment != MomentKind::Time || entry.state != State::Open) continue;
    next = std::min(next.value_or(entry.line.seconds), entry.line.seconds);
  }
  return next;
}

bool ScriptRunner::CanActWithin(TickIndex from, TickIndex to) const {
  return std::any_of(entries_.begin(), entries_.end(), [&](const Entry& entry) {
    if (entry.state == State::Done) return false;
    if (entry.state == State::Due || entry.line.moment == MomentKind::Time) return true;
    if (entry.line.moment == MomentKind::Waiting) return false;
    return entry.tick && from <= *entry.tick && *entry.tick <= to;
  });
}

}  // namespace orbel::host
