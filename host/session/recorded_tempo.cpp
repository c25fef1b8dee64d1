#include "host/session/recorded_tempo.h"

#include <algorithm>

#include "host/session/failure.h"
#include "host/session/session.h"
#include "host/session/shown_text.h"
#include "suite/midi/positions.h"
#include "suite/midi/song_data.h"
#include "suite/midi/song_log.h"

namespace orbel::host {
namespace {

constexpr char kCure[] =
    "this version plays at the recorded tempo and key only; take the cue out, or set it to 1.0 or 0";

// The current song and those that it runs into.
std::vector<std::string> SongsOfThePerformance(const Session& session) {
  const ShowFolder& folder = session.GetFolder();
  std::vector<std::string> songs;
  bool reached = false;
  for (const std::string& number : folder.GetData().GetRunningOrder()) {
    reached = reached || number == session.GetSongNumber();
    if (!reached || !folder.HasAudio(number)) continue;
    songs.push_back(number);
    if (folder.GetLog(number).attacca == 0) break;
  }
  return songs;
}

std::string At(const ShowFolder& folder, const std::string& song, int line, const std::string& cue,
               unsigned tick) {
  const std::string position = tesk_midi::PositionToString(folder.GetData().GetSong(song), tick);
  return Shown(folder.CueFile(song)) + ":" + std::to_string(line) + ": the " + cue + " at " + position +
         " of song " + Shown(song) + ": " + kCure;
}

void RequireOfScript(const std::vector<ScriptLine>& script, const std::string& name) {
  for (const ScriptLine& line : script) {
    const bool changesTempo = line.command.kind == CommandKind::Tempo && line.command.number != 1.0;
    const bool changesKey = line.command.kind == CommandKind::Transpose && line.command.number != 0.0;
    if (!changesTempo && !changesKey) continue;
    throw Failure(Shown(name) + ":" + std::to_string(line.line) + ": \"" + ToString(line.command) +
                  "\": " + kCure);
  }
}

bool AnySongHas(const ShowFolder& folder, const std::string& position, std::string* why) {
  for (const std::string& number : folder.GetData().GetRunningOrder()) {
    try {
      tesk_midi::ParsePosition(folder.GetData().GetSong(number), position);
      return true;
    } catch (const tesk_midi::PositionError& error) {
      if (why->empty()) *why = "\"" + position + "\": " + error.what();
    }
  }
  return false;
}

}  // namespace

void RequireRecordedTempo(const Session& session, const std::vector<ScriptLine>& script,
                          const std::string& scriptName) {
  const ShowFolder& folder = session.GetFolder();
  for (const std::string& song : SongsOfThePerformance(session)) {
    const CL::SongLog& log = folder.GetLog(song);
    for (const CL::TempoScale& tempo : log.tempoScales) {
      if (tempo.GetScale() == 1.0) continue;
      throw Failure(At(folder, song, tempo.GetLine(), "tempo scale " + ShortNumber(tempo.GetScale()),
                       tempo.abs_time()));
    }
    for (const CL::Transpose& transpose : log.transposes) {
      if (transpose.GetSemitones() == 0) continue;
      const std::string cue = "transposition by " + std::to_string(transpose.GetSemitones()) + " semitones";
      throw Failure(At(folder, song, transpose.GetLine(), cue, transpose.abs_time()));
    }
  }
  RequireOfScript(script, scriptName);
}

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
