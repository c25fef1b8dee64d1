#include <algorithm>
#include <cctype>

#include "host/session/live.h"
#include "host/session/shown_text.h"
#include "host/session/song_clock.h"
#include "suite/core/event_codes.h"
#include "suite/midi/song_data.h"
#include "suite/player_core/jump.h"

namespace orbel::host {
namespace {

// "13.1" for "13.1.0".
std::string BarAndBeat(const std::string& position) {
  return position.substr(0, position.rfind('.'));
}

std::string JumpName(int kind) {
  std::string name = codes::editNameByTeskEventCode(kind);
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return name;
}

std::string StateName(const Session& session) {
  if (session.IsPlaying()) return session.IsLoading() ? "loading" : "playing";
  if (session.IsWaiting()) return "waiting at a caesura";
  if (session.IsPaused()) return "paused";
  return session.HasEnded() ? "ended" : "stopped";
}

}  // namespace

StageStatus Live::GetStatus() {
  StageStatus status;
  const tesk_midi::SongData& song = session_.GetSong();
  const TickIndex tick = session_.GetHeardTick();
  status.song = Shown(song.GetNumber() + " " + song.GetName());
  status.position = BarAndBeat(session_.GetClock().PlaceOfTick(tick).position);
  for (const TL::Tempo& tempo : song.GetTimeline().GetTempos()) {
    if (tempo.abs_time() <= tick) status.tempo = 6e7 / tempo.GetMicrosecondsPerQuarter();
  }
  session_.GetTempoAndKey(&status.tempoScale, &status.transposition);
  status.tempo *= status.tempoScale;
  status.state = StateName(session_);
  if (deviceIsLost_ || !unheard_.empty()) {
    const std::string unheardState = deviceIsLost_ ? "recovering" : "unheard";
    status.state = session_.IsPlaying() ? unheardState : status.state + " (no sound)";
  }
  status.next = NextCue_();
  status.sound = SoundText_();
  return status;
}

// Of the loop that ends with the jump; the first goes without saying.
std::string Live::PassOf_(const Jump& jump) const {
  const bool isOfLoop = loop_.song == song_ && loop_.fromTick == jump.toTick && loop_.toTick == jump.fromTick;
  return isOfLoop && loop_.pass > 1 ? " (pass " + std::to_string(loop_.pass) + ")" : "";
}

std::string Live::NextCue_() {
  const SongClock& clock = session_.GetClock();
  const auto at = [&](TickIndex tick) { return BarAndBeat(clock.PlaceOfTick(tick).position); };
  const TickIndex here = session_.GetTick();
  const std::optional<TickIndex> caesura = session_.GetNextCaesura();
  Jump jump;
  const bool jumps = session_.GetNextJump(&jump) && jump.fromTick >= here;
  // At one tick a jump comes before a caesura.
  if (jumps && (!caesura || jump.fromTick <= *caesura)) {
    return at(jump.fromTick) + " " + JumpName(jump.kind) +
           (jump.toTick < jump.fromTick ? " back to " : " to ") + at(jump.toTick) + PassOf_(jump);
  }
  if (caesura) return at(*caesura) + " caesura";
  return at(clock.GetEndTick()) + (session_.RunsAttacca() ? " attacca" : " end");
}

}  // namespace orbel::host
