#include "suite/core/log_sink.h"

#include <cstdio>
#include <utility>

#include "exc/lock/rlockable.h"
#include "exc/lock/scope_lock.h"
#include "reference_suite/core/one_line.h"

namespace tesk_log {

namespace {

// The lock is held while the sink runs, so that a replaced one is not in use any more. Recursive: a sink that
// reports something itself gets that line too.
class Log : public exc::RLockable {
 public:
  Log() : RLockable("Log") {}

  void SetSink(Sink sink) {
    exc::ScopeLock lock(*this);
    sink_ = std::move(sink);
  }

  void WriteLine(const std::string& line) {
    exc::ScopeLock lock(*this);
    if (sink_) {
      const Sink sink = sink_;
      sink(line);
    } else {
      // One call, so that lines of several processes on one terminal stay whole.
      const std::string whole = line + "\n";
      std::fwrite(whole.data(), 1, whole.size(), stderr);
    }
  }

 private:
  Sink sink_ EXC_GUARDED_BY(this);
};

// Never destroyed: threads that outlive the static objects still report.
Log& TheLog() {
  static Log* const log = new Log;
  return *log;
}

}  // namespace

void SetSink(Sink sink) {
  TheLog().SetSink(std::move(sink));
}

void WriteLine(const std::string& line) noexcept {
  try {
    TheLog().WriteLine(reference_core::OneLine(line));
  } catch (...) {
    // A line that cannot be written has nowhere to be reported.
  }
}

}  // namespace tesk_log
