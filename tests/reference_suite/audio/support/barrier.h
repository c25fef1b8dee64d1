#pragma once

#include <atomic>
#include <future>

// Holds a thread up at a place until it is opened, once.
class Barrier {
 public:
  void Pass() {
    reached_ = true;
    opened_.get_future().wait();
  }
  bool IsReached() const { return reached_; }
  void Open() { opened_.set_value(); }

 private:
  std::atomic<bool> reached_{false};
  std::promise<void> opened_;
};
