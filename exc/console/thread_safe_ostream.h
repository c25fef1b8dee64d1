#pragma once

#include <iostream>  // and not only <ostream>: whoever includes this may write before main()
#include <string>

#include "exc/annotations.h"
#include "exc/lock/internal_lockable.h"

namespace exc {

// A stream that several threads write to, one string at a time: every string is one uninterrupted piece of
// output.
//
// Threads    ANY. The lock is held for the whole string; it may wait as long as the terminal does, so nothing
//            that must not wait writes here.
// Capture    text goes to the wrapped stream's buffer of the moment. Whoever wants to see the lines gives
//            std::cout another one for a while: std::cout.rdbuf(&buffer).
class ThreadSafeOStream {
 public:
  // The stream outlives this object.
  explicit constexpr ThreadSafeOStream(std::ostream& stream) : stream_(&stream) {}
  virtual ~ThreadSafeOStream() = default;
  ThreadSafeOStream(const ThreadSafeOStream&) = delete;
  ThreadSafeOStream& operator=(const ThreadSafeOStream&) = delete;

  virtual ThreadSafeOStream& operator<<(std::string text);
  virtual void flush();

 private:
  exc_internal::internal_lockable lock_;
  std::ostream* stream_ EXC_TS_(pt_guarded_by(lock_));
};

// Standard output; supplied by the utility library. Constructors and destructors of static objects may use
// it.
extern ThreadSafeOStream& thread_safe_cout;

}  // namespace exc
