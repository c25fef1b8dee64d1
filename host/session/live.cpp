#include "host/session/live.h"

#include <algorithm>
#include <span>
#include <utility>

#include "host/session/at_work.h"
#include "host/session/known_positions.h"
#include "host/session/output_choice.h"
#include "host/session/overwriting.h"
#include "host/session/refusals.h"
#include "host/session/render.h"
#include "host/session/shown_text.h"
#include "host/session/song_clock.h"
#include "host/session/told_problems.h"

namespace orbel::host {
namespace {

OutputChoice ChooseSound(const PlayOptions& options) {
  NoteShow(options.showPath);
  if (options.output == "file") {
    RenderOptions written;
    written.showPath = options.showPath;
    written.scriptPath = options.scriptPath;
    written.outPath = options.sound.device;
    RequireNothingIsOverwritten(written);
  }
  return ChooseOutput(options.output, options.sound, options.say);
}

}  // namespace

Live::Live(const PlayOptions& options, bool attended)
    : sound_(ChooseSound(options)),
      writesFile_(sound_.output == "file"),
      soundIsWanted_(options.output != "auto" && options.output != "null"),
      attended_(attended),
      verbose_(options.verbose),
      session_(options.showPath, options.song, OutputKind::Live, sound_, options.say),
      directions_(ReadDirections(options.scriptPath, options.vampPasses, options.caesuraSilence)),
      conductor_(session_, directions_) {
  if (directions_.script) RequireKnownPositions(session_, *directions_.script, directions_.scriptName);
}

std::vector<std::string> Live::Start() {
  StandAtSong_();
  SayWhereItPlays_();
  TakeDeviceUpdates_();
  if (!attended_ && !isHeld_) session_.Do({CommandKind::Play, 0.0, ""});
  return TakeMessages_();
}

std::vector<std::string> Live::Poll(double now) {
  if (writesFile_) now = PlayIntoFile_(now);
  TakeEvents_();
  // In this order: what was told before a device came or went is of the one before.
  TakeMeters_();
  TakeDeviceUpdates_();
  TakeSystemLines_(now);
  SayWhatIsWaitedFor_();
  Look_(now);
  isHeld_ = isHeld_ && !session_.IsPlaying();
  // A device that was lost may have ended it just now.
  if (!over_ && !isHeld_ && ActsAlone_()) ActAlone_(now);
  return TakeMessages_();
}

bool Live::IsUnderWay() const {
  // Where nobody sits at the keys, nothing goes on from where it is held.
  const bool goesOn = attended_ || !isHeld_;
  return session_.IsPlaying() || (goesOn && (session_.IsWaiting() || session_.IsPaused()));
}

std::vector<std::string> Live::Do(const Command& command) {
  try {
    const std::string message = session_.Do(command);
    if (!message.empty()) messages_.push_back(message);
  } catch (const PlayerLost&) {
    throw;
  } catch (const std::exception& error) {
    messages_.push_back(Shown(InWords(error)));
  }
  return TakeMessages_();
}

void Live::TakeEvents_() {
  for (const StageEvent& event : session_.TakeEvents()) {
    if (event.kind == StageEvent::Kind::LoopPass) loop_ = event;
    if (event.kind == StageEvent::Kind::LoopPass && event.pass > 1) {
      conductor_.OnJump(event.toTick, event.fromTick);
      tick_ = event.fromTick;
    }
    if (event.kind == StageEvent::Kind::LoadFailed) {
      const std::string what = session_.WhatFailedToLoad();
      if (!what.empty()) messages_.push_back(what);
    }
    if (event.kind == StageEvent::Kind::AttaccaBrokenOff) GoOnAfterBrokenAttacca_();
  }
}

// The song before has run straight on into one that is not decoded yet.
void Live::SayWhatIsWaitedFor_() {
  const std::string song = session_.IsPlaying() && session_.IsLoading() ? session_.GetSongNumber() : "";
  if (!song.empty() && song != loadingToldOf_) messages_.push_back(LoadingText(song));
  loadingToldOf_ = song;
}

// What has become of the position since the last look. A jump that a listener did not tell of shows as a step
// back.
void Live::Look_(double now) {
  conductor_.OnTime(now);
  if (session_.GetSongNumber() != song_) {
    song_ = session_.GetSongNumber();
    if (session_.IsPlaying()) {
      conductor_.OnBegunSong();
    } else {
      conductor_.OnSong();
    }
    tick_ = session_.GetTick();
  }
  const TickIndex tick = session_.GetTick();
  if (tick < tick_) {
    conductor_.OnJump(tick_, tick);
    loop_ = {};
  }
  conductor_.OnPosition(tick);
  tick_ = tick;
}

void Live::ActAlone_(double now) {
  try {
    conductor_.Act();
    if (conductor_.IsStuck() && !attended_) {
      return EndWith_(kCannotEnd, "a vamp around " + session_.GetClock().PlaceOfTick(tick_).position +
                                      " of song " + Shown(song_) +
                                      " goes on for ever: nothing in the script leaves it any more");
    }
    if (session_.IsPlaying()) return standsSince_.reset();
    if (session_.HasEnded()) return GoOnAfterSong_();
    const bool atCaesura = session_.IsWaiting();
    // It stands at its end: that it has ended is told in a moment. A caesura may lie there too, and is left.
    const bool atEnd = session_.GetTick() >= session_.GetClock().GetEndTick();
    if (atEnd && !atCaesura && (!directions_.script || session_.IsToldToHaveEndedSoon())) return;
    double silence = 0.0;
    if (conductor_.LookWhileStanding(atCaesura, now, &silence) == Conductor::Standing::ScriptEnds) {
      if (!attended_) EndWith_(kDone, "the script ends here");
      return;
    }
    if (!standsSince_) standsSince_ = now + silence;
    if (now < *standsSince_) return;
    standsSince_.reset();
    conductor_.Resume(atCaesura, now);
    // Behind a caesura at its end a song may have ended already.
    const bool stuck = !directions_.script && !atEnd && !session_.IsPlaying();
    // Elsewhere than at a caesura only a failure has brought it to a stand, and that has been told.
    if (stuck) EndWith_(atCaesura ? kCannotEnd : kFailed, "nothing leads on from here");
  } catch (const PlayerLost&) {
    throw;
  } catch (const std::exception& error) {
    EndWith_(kFailed, InWords(error));
  }
}

// After the last read of a song that does not run into the next. With a script that is the end, as in a
// render.
void Live::GoOnAfterSong_() {
  if (attended_) return;
  // Of the last one it is told how it ended: asking for the next would put it back to its start.
  if (directions_.script || session_.IsLastSong() || !session_.NextSongStopped()) return EndWith_(kDone, "");
  StandAtSong_();
  session_.Do({CommandKind::Play, 0.0, ""});
}

// Who sits at the keys has heard the music break off and decides when it begins again.
void Live::GoOnAfterBrokenAttacca_() {
  StandAtSong_();
  if (ActsAlone_()) session_.Do({CommandKind::Play, 0.0, ""});
}

void Live::StandAtSong_() {
  song_ = session_.GetSongNumber();
  tick_ = session_.GetLandingTick();
  conductor_.OnStandingSong();
}

void Live::EndWith_(ExitStatus status, const std::string& message) {
  over_ = true;
  statusAtEnd_ = status;
  if (!message.empty()) messages_.push_back(message);
}

std::vector<std::string> Live::TakeMessages_() {
  const auto& problems = session_.GetProblems();
  const auto untold = std::span(problems).subspan(problemsTold_);
  for (const std::string& line : TellProblems(untold, session_.GetFolder().GetPath()))
    messages_.push_back(Shown(line));
  problemsTold_ = problems.size();
  return std::exchange(messages_, {});
}

}  // namespace orbel::host
