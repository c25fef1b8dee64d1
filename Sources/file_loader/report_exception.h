#pragma once

namespace file_loader {

// Logs an exception that ended on a background thread. A report that fails itself (no memory left) is lost:
// that is better than the end of the program. Threads: LOADER, DELETER.
void ReportException(const char* message, int line) noexcept;

}  // namespace file_loader
