#include "host/cli/not_empty.h"

namespace orbel::host::cli {

CLI::Validator NotEmpty(const std::string& what, const std::string& cure) {
  return CLI::Validator(
      [=](const std::string& text) {
        return text.empty() ? "the " + what + " is empty; give " + cure : std::string();
      },
      "");
}

CLI::Validator GivesAShow() {
  return NotEmpty("name", "the show folder");
}

CLI::Validator GivesASong() {
  return NotEmpty("number", "the song's number");
}

}  // namespace orbel::host::cli
