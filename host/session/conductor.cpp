#include "host/session/conductor.h"

#include <algorithm>

#include "host/session/at_work.h"
#include "host/session/failure.h"
#include "host/session/script.h"
#include "host/session/session.h"
#include "host/session/shown_text.h"
#include "host/session/song_clock.h"
#include "suite/core/event_codes.h"
#include "suite/midi/positions.h"
#include "suite/midi/song_data.h"
#include "suite/midi/song_log.h"
#include "suite/player_core/jump.h"

namespace orbel::host {

Directions ReadDirections(const std::string& scriptName, int vampPasses, double caesuraSilence) {
  Directions directions;
  directions.vampPasses = vampPasses;
  directions.caesuraSilence = caesuraSilence;
  directions.scriptName = scriptName;
  if (!scriptName.empty()) directions.script = ReadScriptFile(scriptName);
  return directions;
}

Conductor::Conductor(Session& session, Directions directions)
    : session_(session),
      directions_(std::move(directions)),
      script_(directions_.script.value_or(std::vector<ScriptLine>())),
      leaver_(directions_.vampPasses) {}

void Conductor::OnSong() {
  BeginSong_(session_.GetTick());
}

void Conductor::OnStandingSong() {
  BeginSong_(session_.GetLandingTick());
}

void Conductor::OnBegunSong() {
  BeginSong_(session_.GetClock().GetStartTick());
}

void Conductor::BeginSong_(TickIndex tick) {
  const std::string number = session_.GetSongNumber();
  const ShowFolder& folder = session_.GetFolder();
  NoteSong(number, folder.HasAudio(number) ? "data/" + folder.GetAudioFiles().at(number) : "");
  idlePasses_.clear();
  leaver_.OnSong();
  const tesk_midi::SongData& song = session_.GetSong();
  script_.OnSong(
      [&](const std::string& position) -> std::optional<TickIndex> {
        try {
          return tesk_midi::ParsePosition(song, position);
        } catch (const tesk_midi::PositionError&) {
          return std::nullopt;  // it lies in another song of the performance
        }
      },
      tick);
}

void Conductor::OnJump(TickIndex from, TickIndex to) {
  leaver_.OnJump(from, to, session_.GetLog());
  script_.Land(to);
  if (!IsVamp_(from, to)) return;
  const bool seen = !idlePasses_.insert({from, to}).second;
  stuck_ = stuck_ || (directions_.script ? seen && !script_.CanActWithin(to, from) : leaver_.IsStuck());
}

bool Conductor::IsVamp_(TickIndex from, TickIndex to) const {
  const auto& loops = session_.GetLog().loops;
  return std::any_of(loops.begin(), loops.end(), [&](const CL::Loop& loop) {
    return loop.GetEventCode() == codes::kVamp && loop.abs_time() == to && loop.GetEndTime() == from;
  });
}

void Conductor::OnPosition(TickIndex tick) {
  script_.PlayTo(tick);
}

void Conductor::OnTime(double seconds) {
  script_.SetTime(seconds);
}

std::vector<Command> Conductor::Act() {
  std::vector<Command> done;
  if (directions_.script) {
    for (const ScriptLine& line : script_.TakeDue()) {
      Carry_(line);
      done.push_back(line.command);
    }
    return done;
  }
  Jump next;
  const bool sayGo =
      session_.IsPlaying() && session_.GetNextJump(&next) &&
      leaver_.ShouldSayGo(next, session_.GetTick(), session_.GetLog(), session_.GetSong().GetTimeline());
  if (sayGo) {
    done.push_back({});
    session_.Do(done.back());
  }
  return done;
}

Conductor::Standing Conductor::LookWhileStanding(bool atCaesura, double now, double* silence) {
  *silence = 0.0;
  if (!directions_.script) {
    *silence = directions_.caesuraSilence;
    return Standing::GoesOn;
  }
  if (atCaesura && script_.HasWaiting()) return Standing::GoesOn;
  const std::optional<double> next = script_.NextTime();
  if (!next) return Standing::ScriptEnds;
  *silence = std::max(0.0, *next - now);
  return Standing::GoesOn;
}

std::vector<Command> Conductor::Resume(bool atCaesura, double now) {
  if (!directions_.script) {
    session_.Do({});
    return {Command{}};
  }
  if (atCaesura) {
    if (const std::optional<ScriptLine> line = script_.TakeWaiting()) {
      Carry_(*line);
      return {line->command};
    }
  }
  script_.SetTime(now);
  return Act();
}

void Conductor::Carry_(const ScriptLine& line) {
  idlePasses_.clear();
  try {
    const std::string song = session_.GetSongNumber();
    // What it says is why nothing has moved.
    const bool isDone = session_.Do(line.command).empty();
    const bool moved = line.command.kind == CommandKind::Seek || line.command.kind == CommandKind::Left ||
                       line.command.kind == CommandKind::Right || line.command.kind == CommandKind::Stop;
    const bool otherSong =
        line.command.kind == CommandKind::Next || line.command.kind == CommandKind::Previous;
    if (session_.GetSongNumber() != song) {
      OnBegunSong();
    } else if (otherSong) {
      OnSong();
    } else if (moved && isDone) {
      // What has been rendered on from there is not reached yet.
      script_.Land(session_.GetLandingTick());
    }
  } catch (const Failure& failure) {
    throw Failure(Shown(directions_.scriptName) + ":" + std::to_string(line.line) + ": " + failure.what(),
                  failure.GetStatus());
  }
}

}  // namespace orbel::host
