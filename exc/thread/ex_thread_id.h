#pragma once

#include <pthread.h>

namespace exc {

// Which thread: a thread handle that can be "none". A plain value; it neither owns nor joins the thread.
class ExThreadId {
 public:
  ExThreadId() = default;
  // Not explicit: a thread handle is a thread id.
  ExThreadId(pthread_t handle) : handle_(handle) {}
  virtual ~ExThreadId() = default;
  ExThreadId(const ExThreadId&) = default;
  virtual ExThreadId& operator=(const ExThreadId& other) = default;

  // Compares handles; two null ids are equal.
  virtual bool operator==(const ExThreadId& other) const { return handle_ == other.handle_; }

 private:
  pthread_t handle_{};
};

}  // namespace exc
