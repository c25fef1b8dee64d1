#pragma once

// The system's time of day as this program and the libraries that it loads are told it: this program's own
// `time` and `gettimeofday` stand before the system's.
namespace running_clock {

// How far it runs ahead of the true time.
extern long aheadSeconds;

}  // namespace running_clock
