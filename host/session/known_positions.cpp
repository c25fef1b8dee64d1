#include "host/session/known_positions.h"

#include "host/session/failure.h"
#include "host/session/session.h"
#include "host/session/shown_text.h"
#include "suite/midi/positions.h"
#include "suite/midi/song_data.h"

namespace orbel::host {
namespace {

bool AnySongHas(const ShowFolder& folder, const std::string& position, std::string* why) {
  for (const std::string& number : folder.GetData().GetRunningOrder()) {
    try {
      tesk_midi::ParsePosition(folder.GetData().GetSong(number), position);
      return true;
    } catch (const tesk_midi::PositionError& error) {
      if (why->empty()) *why = "\"" + ShownInShort(position) + "\": " + error.what();
    }
  }
  return false;
}

}  // namespace

void RequireKnownPositions(const Session& session, const std::vector<ScriptLine>& script,
                           const std::string& scriptName) {
  for (const ScriptLine& line : script) {
    std::string why;
    const bool good =
        (line.moment != MomentKind::At || AnySongHas(session.GetFolder(), line.position, &why)) &&
        (line.command.kind != CommandKind::Seek ||
         AnySongHas(session.GetFolder(), line.command.position, &why));
    if (!good) throw Failure(Shown(scriptName) + ":" + std::to_string(line.line) + ": " + Shown(why));
  }
}

}  // namespace orbel::host
