#include <array>

#include "reference_suite/midi/show_folder/table_reader.h"

namespace tesk_midi {

namespace {

const char kForms[] =
    "write a bar (\"17\"), bar and beat (\"17.3\"), bar, beat and ticks (\"17.3.120\"), \"end\" or "
    "{ tick = 30720 }.";

}  // namespace

std::optional<WrittenPosition> TableReader::Position(KeyUse use) {
  const TomlNode* value = Find(use.key);
  if (value == nullptr) return std::nullopt;
  if (value->kind == TomlKind::String) return TextPosition_(*value, use);
  if (value->kind == TomlKind::Table) return TickPosition_(*value, use);
  WrongKind_(*value, use, "a position");
  return std::nullopt;
}

std::optional<WrittenPosition> TableReader::TextPosition_(const TomlNode& value, KeyUse use) {
  const std::optional<WrittenPlace> place = ReadPositionText(value.text);
  // "tick:30720" is for command lines; in a file there is one way to write a tick.
  if (place && place->kind != WrittenPlace::Kind::Tick) {
    return WrittenPosition{value.place, Quoted(value.text), *place};
  }
  problems_->Error(value.place,
                   Quoted(use.key) + " is " + Quoted(value.text) + ", which is no position; " + kForms);
  return std::nullopt;
}

std::optional<WrittenPosition> TableReader::TickPosition_(const TomlNode& table, KeyUse use) {
  constexpr std::array<std::string_view, 1> kKnown{"tick"};
  constexpr KeyUse kTick{"tick", "30720"};
  TableReader reader(table, "the position of " + Quoted(use.key), problems_);
  const int errorsBefore = problems_->GetErrorCount();
  reader.RefuseUnknownKeys(kKnown);
  reader.Require(kTick);
  const auto tick = reader.Integer(kTick, 0, 0xFFFFFFFF);
  if (!tick || problems_->GetErrorCount() != errorsBefore) return std::nullopt;

  WrittenPlace place;
  place.kind = WrittenPlace::Kind::Tick;
  place.ticks = static_cast<std::uint64_t>(*tick);
  return WrittenPosition{table.place, "tick " + std::to_string(*tick), place};
}

}  // namespace tesk_midi
