#include "Sources/file_loader/report_exception.h"

#include "Sources/file_loader/source_path.h"
#include "suite/core/tesk_log_exception.h"

namespace file_loader {

void ReportException(const char* message, int line) noexcept {
  try {
    TeskLogException(message, kSourcePath, line);
  } catch (...) {
    // Only the making of the strings can fail, and there is nobody left to tell.
  }
}

}  // namespace file_loader
