#pragma once

#include <functional>
#include <string>

// The application's log, as far as the suite writes to it: single lines, to standard error unless a host
// wants them. Threads: ANY.
namespace tesk_log {

// Receives one line without a line end.
using Sink = std::function<void(const std::string& line)>;

// Lines go to `sink` from now on; an empty one means standard error again. The sink is called on the thread
// that reports, one line at a time, and not any more once it has been replaced. It must not wait for another
// thread.
void SetSink(Sink sink);

// Writes one line; control characters in it are written as \n, \x1b and so on. Never throws: what the sink
// throws is dropped.
void WriteLine(const std::string& line) noexcept;

}  // namespace tesk_log
