#include "reference_suite/midi/timeline/position_text.h"

namespace tesk_midi {

namespace {

constexpr std::string_view kTickPrefix = "tick:";
constexpr std::size_t kMostDigits = 18;

// Takes the digits at the front of `text`; false when there are none, or too many.
bool TakeNumber(std::string_view* text, std::uint64_t* number) {
  std::size_t count = 0;
  *number = 0;
  for (; count < text->size() && (*text)[count] >= '0' && (*text)[count] <= '9'; ++count) {
    if (count == kMostDigits) return false;
    *number = 10 * *number + static_cast<std::uint64_t>((*text)[count] - '0');
  }
  text->remove_prefix(count);
  return count != 0;
}

// The same after a dot. Nothing at all is fine too and leaves `number` as it is.
bool TakeDotAndNumber(std::string_view* text, std::uint64_t* number) {
  if (text->empty()) return true;
  if (text->front() != '.') return false;
  text->remove_prefix(1);
  return TakeNumber(text, number);
}

}  // namespace

std::optional<WrittenPlace> ReadPositionText(std::string_view text) {
  WrittenPlace place;
  if (text == "end") return place;
  if (text.substr(0, kTickPrefix.size()) == kTickPrefix) {
    place.kind = WrittenPlace::Kind::Tick;
    text.remove_prefix(kTickPrefix.size());
    if (!TakeNumber(&text, &place.ticks) || !text.empty()) return std::nullopt;
    return place;
  }
  place.kind = WrittenPlace::Kind::Bar;
  if (!TakeNumber(&text, &place.bar)) return std::nullopt;
  if (!TakeDotAndNumber(&text, &place.beat)) return std::nullopt;
  if (!TakeDotAndNumber(&text, &place.ticks)) return std::nullopt;
  if (!text.empty()) return std::nullopt;
  return place;
}

}  // namespace tesk_midi
