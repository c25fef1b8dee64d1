#include "host/session/stage_events.h"

#include <algorithm>
#include <utility>

#include "suite/core/callback_dispatcher.h"
#include "suite/core/notification_names.h"

namespace orbel::host {

StageEvents::StageEvents() {
  notify::guiDispatcher.AddListener(this);
  notify::callbackDispatcher.Add(this, notify::names::stopped_at_end_of_song, [this](void*) {
    StageEvent event;
    event.kind = StageEvent::Kind::EndOfSong;
    Put_(std::move(event));
  });
  notify::callbackDispatcher.Add(this, notify::names::audio_device_changed, [this](void* update) {
    const std::lock_guard lock(mutex_);
    deviceUpdates_.push_back(*static_cast<const notify::DeviceUpdate*>(update));
  });
  notify::callbackDispatcher.Add(this, notify::names::audio_meters, [this](void* update) {
    PutMeters_(*static_cast<const notify::MetersUpdate*>(update));
  });
}

StageEvents::~StageEvents() {
  notify::callbackDispatcher.Remove(this);
  notify::guiDispatcher.RemoveListener(this);
}

std::optional<StageEvent> StageEvents::Take() {
  const std::lock_guard lock(mutex_);
  if (events_.empty()) return std::nullopt;
  StageEvent event = std::move(events_.front());
  events_.pop_front();
  return event;
}

std::vector<notify::DeviceUpdate> StageEvents::TakeDeviceUpdates() {
  const std::lock_guard lock(mutex_);
  return std::exchange(deviceUpdates_, {});
}

std::optional<notify::MetersUpdate> StageEvents::TakeMeters() {
  const std::lock_guard lock(mutex_);
  return std::exchange(meters_, std::nullopt);
}

void StageEvents::Clear() {
  const std::lock_guard lock(mutex_);
  events_.clear();
}

notify::PositionUpdate StageEvents::GetPosition() const {
  const std::lock_guard lock(mutex_);
  return position_;
}

void StageEvents::Put_(StageEvent event) {
  const std::lock_guard lock(mutex_);
  events_.push_back(std::move(event));
}

void StageEvents::PutMeters_(notify::MetersUpdate meters) {
  const std::lock_guard lock(mutex_);
  const std::size_t channels = meters_ ? std::min(meters_->peaks.size(), meters.peaks.size()) : 0;
  for (std::size_t i = 0; i < channels; ++i) meters.peaks[i] = std::max(meters.peaks[i], meters_->peaks[i]);
  meters_ = std::move(meters);
}

void StageEvents::OnPlayerException() {
  StageEvent event;
  event.kind = StageEvent::Kind::LoadFailed;
  Put_(std::move(event));
}

void StageEvents::OnSongLoaded(const std::string& songNumber) {
  StageEvent event;
  event.kind = StageEvent::Kind::SongLoaded;
  event.song = songNumber;
  Put_(std::move(event));
}

void StageEvents::OnPosition(const notify::PositionUpdate& update) {
  const std::lock_guard lock(mutex_);
  position_ = update;
}

void StageEvents::OnCaesura(const std::string& songNumber, unsigned tickIndex) {
  StageEvent event;
  event.kind = StageEvent::Kind::Caesura;
  event.song = songNumber;
  event.fromTick = tickIndex;
  Put_(std::move(event));
}

void StageEvents::OnLoopPass(const notify::LoopUpdate& update) {
  StageEvent event;
  event.kind = StageEvent::Kind::LoopPass;
  event.song = update.songNumber;
  event.fromTick = update.fromTick;
  event.toTick = update.toTick;
  event.pass = update.pass;
  Put_(std::move(event));
}

}  // namespace orbel::host
