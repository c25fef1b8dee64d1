#include "reference_suite/midi/show_folder/read_song_log.h"

#include <algorithm>
#include <tuple>
#include <vector>

#include "reference_suite/midi/show_folder/cue_shapes.h"
#include "reference_suite/midi/show_folder/nearest_word.h"
#include "reference_suite/midi/show_folder/table_reader.h"

namespace tesk_midi {

namespace {

constexpr double kLeastScale = 0.25;
constexpr double kMostScale = 4.0;
constexpr int kMostSemitones = 24;
constexpr int kLeastPasses = 2;
constexpr int kMostPasses = 1'000'000;
constexpr int kMostPages = 1'000'000;
constexpr int kLastFirstBar = 1'000'000;

bool ReadExit(TableReader* table, FileProblems* problems, WrittenCue* cue) {
  static constexpr std::array<std::string_view, 3> kExits{"end", "bar", "beat"};
  const auto exit = table->Text({"exit", "\"end\""});
  if (!exit) return table->Find("exit") == nullptr;
  const auto found = std::find(kExits.begin(), kExits.end(), *exit);
  if (found == kExits.end()) {
    problems->Error(table->Find("exit")->place,
                    "\"exit\" must be \"end\", \"bar\" or \"beat\", but is " + Quoted(*exit) + ".");
    return false;
  }
  cue->exit = static_cast<CL::VampExit>(found - kExits.begin());
  return true;
}

bool ReadNumber(TableReader* table, KeyUse use, int least, int most, WrittenCue* cue) {
  const auto number = table->Integer(use, least, most);
  if (number) cue->number = static_cast<int>(*number);
  return number.has_value();
}

bool ReadPasses(TableReader* table, WrittenCue* cue) {
  cue->number = kLeastPasses;
  const KeyUse use{"passes", "3"};
  return table->Find(use.key) == nullptr || ReadNumber(table, use, kLeastPasses, kMostPasses, cue);
}

bool ReadScale(TableReader* table, WrittenCue* cue) {
  const KeyUse use{"scale", "0.95"};
  table->Require(use);
  const auto scale = table->Number(use, kLeastScale, kMostScale);
  if (scale) cue->scale = *scale;
  return scale.has_value();
}

bool ReadRequiredNumber(TableReader* table, KeyUse use, int least, int most, WrittenCue* cue) {
  return table->Require(use) && ReadNumber(table, use, least, most, cue);
}

bool ReadName(TableReader* table, WrittenCue* cue) {
  const KeyUse use{"name", "\"Dialogue\""};
  if (!table->Require(use)) return false;
  const auto name = table->Text(use);
  if (name) cue->name = ShownText(*name);
  return name.has_value();
}

// What a cue says besides its position. False when something of it is wrong or missing.
bool ReadValue(TableReader* table, FileProblems* problems, WrittenCue* cue) {
  switch (cue->kind) {
    case CueKind::Tempo:
      return ReadScale(table, cue);
    case CueKind::Transpose:
      return ReadRequiredNumber(table, {"semitones", "-2"}, -kMostSemitones, kMostSemitones, cue);
    case CueKind::Vamp:
      return ReadExit(table, problems, cue);
    case CueKind::Repeat:
      return ReadPasses(table, cue);
    case CueKind::Marker:
      return ReadName(table, cue);
    case CueKind::Page:
      return ReadRequiredNumber(table, {"number", "1"}, 0, kMostPages, cue);
    default:
      return true;
  }
}

bool ReadPositions(TableReader* table, bool isRange, WrittenCue* cue) {
  const KeyUse begin{isRange ? "from" : "at", "\"17\""};
  const KeyUse end{"to", "\"25\""};
  const bool hasBegin = table->Require(begin);
  const bool hasEnd = !isRange || table->Require(end);
  const auto beginPosition = table->Position(begin);
  if (isRange) cue->end = table->Position(end);
  if (!hasBegin || !hasEnd || !beginPosition) return false;
  cue->begin = *beginPosition;
  return !isRange || cue->end.has_value();
}

void ReadCue(const TomlNode& node, const CueShape& shape, FileProblems* problems, WrittenSongLog* log) {
  TableReader table(node, "[[" + std::string(shape.word) + "]]", problems);
  table.RefuseUnknownKeys(shape.keys, kSongKeys);
  WrittenCue cue;
  cue.kind = shape.kind;
  cue.place = node.place;
  const bool positions = ReadPositions(&table, shape.isRange, &cue);
  const bool value = ReadValue(&table, problems, &cue);
  if (positions && value) log->cues.push_back(std::move(cue));
}

void ReadCues(const TomlNode& top, const CueShape& shape, FileProblems* problems, WrittenSongLog* log) {
  const TomlNode* cues = TableReader(top, "", problems).Find(shape.word);
  if (cues == nullptr) return;
  const std::string cure =
      "; write [[" + std::string(shape.word) + "]], with two brackets, above the keys of each.";
  if (cues->kind != TomlKind::Array) {
    problems->Error(cues->place,
                    Quoted(shape.word) + " must be a list of tables, but is " + KindText(cues->kind) + cure);
    return;
  }
  for (const TomlNode& cue : cues->elements) {
    if (cue.kind == TomlKind::Table) {
      ReadCue(cue, shape, problems, log);
    } else {
      problems->Error(cue.place, Quoted(shape.word) + " must be a list of tables, but holds " +
                                     KindText(cue.kind) + cure);
    }
  }
}

std::vector<std::string_view> TopKeys() {
  std::vector<std::string_view> keys(kSongKeys.begin(), kSongKeys.end());
  for (const CueShape& shape : kCueShapes) keys.push_back(shape.word);
  return keys;
}

bool WrittenBefore(const WrittenCue& a, const WrittenCue& b) {
  return std::tie(a.place.line, a.place.column) < std::tie(b.place.line, b.place.column);
}

}  // namespace

const char* CueWord(CueKind kind) {
  return kCueShapes[static_cast<std::size_t>(kind)].word.data();
}

WrittenSongLog ReadSongLog(const std::string& text, FileProblems* problems) {
  WrittenSongLog log;
  TomlNode top;
  if (!ReadTomlText(text, problems, &top)) return log;
  TableReader table(top, "", problems);
  if (!table.HasKnownFormat()) return log;
  table.RefuseUnknownKeys(TopKeys());
  log.skip = table.Boolean({"skip", "true"}).value_or(false);
  log.attacca = table.Boolean({"attacca", "true"}).value_or(false);
  log.firstBar = static_cast<int>(table.Integer({"first_bar", "0"}, 0, kLastFirstBar).value_or(1));
  log.audioStart = table.Position({"audio_start", "\"1\""});
  log.audioEnd = table.Position({"audio_end", "\"97\""});
  for (const CueShape& shape : kCueShapes) ReadCues(top, shape, problems, &log);
  std::stable_sort(log.cues.begin(), log.cues.end(), WrittenBefore);
  return log;
}

}  // namespace tesk_midi
