#include "host/cli/between.h"

#include <charconv>
#include <string>

#include "host/session/shown_text.h"

namespace orbel::host::cli {
namespace {

template <typename Number>
CLI::Validator Make(Number least, Number most, const std::string& what) {
  const std::string range =
      ShortNumber(static_cast<double>(least)) + " to " + ShortNumber(static_cast<double>(most));
  const auto complain = [=](const std::string& text) -> std::string {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    // Written so that what is not a number is not between them either.
    if (isNumber && value >= least && value <= most) return "";
    return "\"" + text + "\" is not " + what + " from " + range;
  };
  return CLI::Validator(complain, range);
}

}  // namespace

CLI::Validator Between(double least, double most) {
  return Make(least, most, "a number");
}

CLI::Validator WholeBetween(int least, int most) {
  return Make(least, most, "a whole number");
}

}  // namespace orbel::host::cli
