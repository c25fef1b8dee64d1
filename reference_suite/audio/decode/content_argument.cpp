#include "reference_suite/audio/decode/content_argument.h"

#include <charconv>
#include <string_view>
#include <system_error>

#include "reference_suite/audio/text/shown_path.h"
#include "suite/audio/errors.h"

namespace tesk_audio {

namespace {

// Takes `name` and the number behind it off the front of `text`; false when they are not there. Not through
// the locale: a comma is never a decimal point here.
template <typename Number>
bool Take(std::string_view* text, std::string_view name, Number least, Number most, Number* number) {
  if (!text->starts_with(name)) return false;
  text->remove_prefix(name.size());
  const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), *number);
  if (error != std::errc()) return false;
  text->remove_prefix(static_cast<std::size_t>(end - text->data()));
  return *number >= least && *number <= most;
}

}  // namespace

WantedFormat FormatOfContentArgument(const std::string& shownPath, const std::string& argument) {
  WantedFormat wanted;
  std::string_view rest = argument;
  if (rest.empty()) return wanted;
  const bool known = Take(&rest, "rate=", 1000.0, 768000.0, &wanted.rateHz) &&
                     (rest.empty() || Take(&rest, ",channels=", 1U, 1024U, &wanted.channels));
  if (known && rest.empty()) return wanted;
  throw AudioSampleContentError(shownPath + ": the decoder does not know the argument \"" +
                                ShownPath(argument) +
                                "\". Give \"rate=\" and frames per second from 1000 to 768000, with "
                                "\",channels=\" and their number behind it or without, or nothing.");
}

}  // namespace tesk_audio
