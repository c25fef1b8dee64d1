#include "Sources/file_loader/report_exception.h"

#include "Sources/file_loader/source_path.h"
#include "suite/core/tesk_log_exception.h"

namespace file_loader {

void ReportException(const char* message, int line) noexcept {
  TeskLogException(message, kSourcePath, line);
}

}  // namespace file_loader
