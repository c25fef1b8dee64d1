#include "host/session/drawn_on.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace orbel::host {

bool MessagesAreDrawnOn() {
  const char* const kind = std::getenv("TERM");
  return ::isatty(STDERR_FILENO) == 1 && (kind == nullptr || std::string_view(kind) != "dumb");
}

}  // namespace orbel::host
