#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "suite/core/gui_dispatcher.h"

namespace test_support {

// Hears positions and caesuras while it lives. Threads: ANY.
class PositionListener : public notify::GuiListener {
 public:
  explicit PositionListener(std::function<void(const notify::PositionUpdate&)> onPosition = {})
      : onPosition_(std::move(onPosition)) {
    notify::guiDispatcher.AddListener(this);
  }
  ~PositionListener() override { notify::guiDispatcher.RemoveListener(this); }

  void OnPosition(const notify::PositionUpdate& update) override {
    {
      const std::lock_guard lock(mutex_);
      positions_.push_back(update);
    }
    if (onPosition_) onPosition_(update);
  }
  void OnCaesura(const std::string& song, unsigned tick) override {
    const std::lock_guard lock(mutex_);
    caesuras_.push_back(song + "@" + std::to_string(tick));
  }

  std::vector<unsigned> GetTicks() const {
    const std::lock_guard lock(mutex_);
    std::vector<unsigned> ticks;
    for (const notify::PositionUpdate& update : positions_) ticks.push_back(update.tickIndex);
    return ticks;
  }
  std::vector<notify::PositionUpdate> GetPositions() const {
    const std::lock_guard lock(mutex_);
    return positions_;
  }
  std::vector<std::string> GetCaesuras() const {
    const std::lock_guard lock(mutex_);
    return caesuras_;
  }

 private:
  const std::function<void(const notify::PositionUpdate&)> onPosition_;
  mutable std::mutex mutex_;
  std::vector<notify::PositionUpdate> positions_;
  std::vector<std::string> caesuras_;
};

}  // namespace test_support
