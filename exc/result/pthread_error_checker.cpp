#include "exc/result/pthread_error_checker.h"

#include <cerrno>

#include "suite/utility/format.h"

namespace exc {

namespace {

const char* MeaningOf(int code) {
  switch (code) {
    case EAGAIN:
      return "EAGAIN: The system lacked the necessary resources to create another thread.";
    case EINVAL:
      return "EINVAL: The value specified by attr is invalid.";
    case EPERM:
      return "EPERM: The caller does not have appropriate permission to set the required scheduling "
             "parameters or scheduling policy.";
    default:
      return "Unknown result.";
  }
}

}  // namespace

std::string DescribePThreadError(const std::string& what, int code) {
  return format("%s: %d %s", what.c_str(), code, MeaningOf(code));
}

}  // namespace exc
