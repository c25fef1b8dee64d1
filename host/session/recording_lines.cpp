#include "host/session/recording_lines.h"

#include "host/session/shown_text.h"

namespace orbel::host {

std::string AsTheCheckSays(const std::string& line) {
  const std::size_t end = line.find(".obd: ");
  if (!line.starts_with("WARNING: ") || end == std::string::npos) return line;
  const std::size_t folder = line.rfind("/data/", end);
  if (folder == std::string::npos) return line;
  const std::string warning = "warning: " + line.substr(folder + 1);
  if (line.find(" Hz are resampled to ", end) != std::string::npos) return warning;
  return WithoutFullStop(warning) + "; it plays like that, or export the recording again";
}

}  // namespace orbel::host
