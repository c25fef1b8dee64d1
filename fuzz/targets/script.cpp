#include "host/session/script.h"

#include <sstream>

#include "fuzz/targets/targets.h"
#include "host/session/failure.h"

namespace fuzz {
namespace {

using orbel::host::MomentKind;
using orbel::host::ScriptLine;

std::string Moment(const ScriptLine& line) {
  if (line.moment == MomentKind::Waiting) return "waiting ";
  if (line.moment == MomentKind::Time) return "time 1 ";
  return "at " + line.position + " pass " + std::to_string(line.pass) + " ";
}

void CheckLine(const ScriptLine& line) {
  Require(line.line >= 1 && line.pass >= 1, "a line has its number, and passes count from 1");
  Require(line.seconds >= 0.0 && line.seconds <= 1e7, "a moment lies within a performance");
  std::istringstream again(Moment(line) + ToString(line.command));
  const std::vector<ScriptLine> read = orbel::host::ReadScript(again, "again");
  Require(read.size() == 1 && read[0].command.kind == line.command.kind,
          "a command that is said is read again");
  Require(read[0].command.position == line.command.position && read[0].position == line.position,
          "and so are its positions");
}

}  // namespace

void Script(Bytes input) {
  std::istringstream text(Text(input));
  try {
    for (const ScriptLine& line : orbel::host::ReadScript(text, "script.txt")) CheckLine(line);
  } catch (const orbel::host::Failure& failure) {
    const std::string words = failure.what();
    Require(words.starts_with("script.txt:"), "a refusal names file and line");
    for (const char letter : words) {
      Require(static_cast<unsigned char>(letter) >= 0x20 && letter != 0x7F, "a refusal commands no terminal");
    }
  }
}

}  // namespace fuzz
