#include "reference_suite/audio/decode/content_argument.h"

#include <charconv>
#include <string_view>
#include <system_error>

#include "reference_suite/audio/text/shown_path.h"
#include "suite/audio/errors.h"

namespace tesk_audio {

double RateOfContentArgument(const std::string& shownPath, const std::string& argument) {
  if (argument.empty()) return 0.0;
  constexpr std::string_view name = "rate=";
  double rate = 0.0;
  if (argument.compare(0, name.size(), name) == 0) {
    const char* const first = argument.data() + name.size();
    const char* const last = argument.data() + argument.size();
    // Not through the locale: a comma is never a decimal point here.
    const auto [end, error] = std::from_chars(first, last, rate);
    const bool whole = error == std::errc() && end == last;
    if (whole && rate >= 1000.0 && rate <= 768000.0) return rate;
  }
  throw AudioSampleContentError(shownPath + ": the decoder does not know the argument \"" +
                                ShownPath(argument) +
                                "\". Give \"rate=\" and frames per second from 1000 to 768000, or nothing.");
}

}  // namespace tesk_audio
