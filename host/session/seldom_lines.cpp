#include "host/session/seldom_lines.h"

namespace orbel::host {
namespace {

constexpr double kSeconds = 60.0;

}  // namespace

bool SeldomLines::IsNew(const std::string& line, double now) {
  std::erase_if(passed_, [now](const auto& each) { return now - each.second >= kSeconds; });
  return passed_.emplace(line, now).second;
}

}  // namespace orbel::host
