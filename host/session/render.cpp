#include "host/session/render.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "host/session/at_work.h"
#include "host/session/conductor.h"
#include "host/session/failure.h"
#include "host/session/interrupts.h"
#include "host/session/known_positions.h"
#include "host/session/long_wait.h"
#include "host/session/overwriting.h"
#include "host/session/session.h"
#include "host/session/shown_text.h"
#include "host/session/song_clock.h"
#include "host/session/told_problems.h"
#include "host/session/trace.h"

namespace orbel::host {
namespace {

OutputChoice ChooseOutput(const RenderOptions& options) {
  OutputChoice choice;
  choice.rateHz = options.rateHz;
  choice.stretch = options.stretch;
  choice.crossfadeMs = options.crossfadeMs;
  choice.fadeMs = options.fadeMs;
  return choice;
}

std::string NotWritten(const RenderOptions& options) {
  return Shown(options.outPath) + " was not written";
}

// One render from its first read to its last.
class Renderer {
 public:
  Renderer(const RenderOptions& options, const RenderListener& listener)
      : options_(options),
        listener_(listener),
        directions_(ReadDirections(options.scriptPath, options.vampPasses, options.caesuraSilence)),
        session_(options.showPath, options.song, OutputKind::Offline, ChooseOutput(options),
                 listener.waiting),
        conductor_(session_, directions_) {}

  RenderResult Run();
  // What is not complete yet leaves nothing behind.
  void DropFiles() {
    file_.reset();
    trace_.reset();
  }

 private:
  void RequireTheFirstSong_();
  bool Step_();
  std::string WhatTheStepWaitsFor_();
  bool OnStep_(const Step& step, TraceRow row);
  bool Stand_(TraceRow row);
  void Act_();
  void TakeEvents_();
  void NoteCommands_(const std::vector<Command>& commands);
  void WriteSilence_(long long frames);
  TraceRow RowAt_(const SongClock& clock, SampleCount sample) const;
  TraceRow RowHere_();
  void Report_();
  double Now_() const { return static_cast<double>(result_.frames) / rate_; }

  const RenderOptions& options_;
  const RenderListener& listener_;
  const Directions directions_;
  Session session_;
  Conductor conductor_;
  std::unique_ptr<SoundFile> file_;
  std::unique_ptr<Trace> trace_;
  RenderResult result_;
  double rate_ = 0.0;
  std::string song_;
  bool soughtSinceRead_ = false;
};

// Another song under the name that was meant for the first one would be noticed late.
void Renderer::RequireTheFirstSong_() {
  if (!options_.song.empty()) return;
  const std::string first = session_.GetFolder().FindSong("").GetNumber();
  if (session_.GetSongNumber() == first) return;
  throw Failure(session_.WhyLeftOut(first) + "\n" + Shown(options_.outPath) +
                " was not written; name the song to render with --song, for instance --song " +
                Shown(session_.GetSongNumber()));
}

RenderResult Renderer::Run() {
  RequireTheFirstSong_();
  if (directions_.script) RequireKnownPositions(session_, *directions_.script, options_.scriptPath);
  if (!options_.from.empty()) session_.Do({CommandKind::Seek, 0.0, options_.from});
  rate_ = RenderRateHz();
  file_ = CreateSoundFile(options_.outPath, options_.format, rate_, RenderChannels());
  trace_ = std::make_unique<Trace>(options_.tracePath, NotWritten(options_));
  song_ = session_.GetSongNumber();
  conductor_.OnSong();
  session_.Do({CommandKind::Play, 0.0, ""});
  while (Step_()) Report_();
  trace_->Commit();
  file_->Commit();  // last: whatever fails, there is no sound file
  result_.seconds = Now_();
  result_.problems = TellProblems(session_.GetProblems(), options_.showPath);
  return std::move(result_);
}

// False when the performance is over.
bool Renderer::Step_() {
  if (InterruptCount() > 0) throw Failure("interrupted: " + NotWritten(options_));
  conductor_.OnTime(Now_());
  Act_();
  const SongClock& clock = session_.GetClock();  // the step may run into another song
  Step step;
  const LongWait wait(listener_.waiting, WhatTheStepWaitsFor_());
  const bool ran = RenderStep(&step, [&](const float* frames, std::size_t count) {
    file_->Write(frames, count);
    result_.frames += static_cast<long long>(count);
  });
  return ran ? OnStep_(step, RowAt_(clock, step.sample)) : Stand_(RowHere_());
}

// At its end a song runs into the next one, which may not be decoded yet.
std::string Renderer::WhatTheStepWaitsFor_() {
  if (!listener_.waiting || session_.GetTick() < session_.GetClock().GetEndTick()) return "";
  return session_.WhatAnAttaccaWaitsFor();
}

bool Renderer::OnStep_(const Step& step, TraceRow row) {
  static constexpr const char* kNames[] = {"", "jump", "caesura", "end", "attacca"};
  row.outputFrame = result_.frames - step.outputFrames;
  row.frames = step.frames;
  row.scale = step.scale;
  row.transposition = step.transposition;
  row.event = kNames[static_cast<int>(step.event)];
  if (row.event.empty() && std::exchange(soughtSinceRead_, false)) row.event = "seek";

  TakeEvents_();
  if (step.jumpFrom != step.jumpTo) {
    const SongClock& clock = session_.GetClock();
    conductor_.OnJump(clock.SampleToTick(step.jumpFrom), clock.SampleToTick(step.jumpTo));
  }
  if (session_.GetSongNumber() != song_) {
    song_ = session_.GetSongNumber();
    conductor_.OnSong();
  }
  conductor_.OnPosition(session_.GetTick());
  row.nextTick = session_.GetTick();
  if (step.event == Step::Event::Caesura && session_.IsWaiting()) return Stand_(std::move(row));
  trace_->Write(row);
  if (conductor_.IsStuck()) {
    result_.cannotEnd = true;
    result_.message = "a vamp around " + session_.GetClock().PlaceOfTick(session_.GetTick()).position +
                      " of song " + Shown(song_) +
                      " goes on for ever: nothing in the script leaves it any more";
    return false;
  }
  return !session_.HasEnded();
}

// Playback stands: at a caesura, or paused or stopped by the script. Silence passes until somebody acts.
bool Renderer::Stand_(TraceRow row) {
  while (true) {
    Act_();
    TakeEvents_();
    if (session_.IsPlaying()) return true;
    if (session_.HasEnded()) return false;
    const bool atCaesura = session_.IsWaiting();
    const std::string place =
        session_.GetClock().PlaceOfTick(session_.GetTick()).position + " of song " + Shown(song_);
    double silence = 0.0;
    if (conductor_.LookWhileStanding(atCaesura, Now_(), &silence) == Conductor::Standing::ScriptEnds) {
      // Not cut off where the file ends.
      row.frames = static_cast<SampleCount>(FadeOutFrames());
      trace_->Write(row);
      WriteSilence_(row.frames);
      if (atCaesura) result_.message = "the script ends while playback waits at the caesura at " + place;
      if (session_.IsPaused() && !atCaesura)
        result_.message = "the script ends while playback is paused at " + place;
      return false;
    }
    row.frames = std::llround(silence * rate_);
    trace_->Write(row);
    WriteSilence_(row.frames);
    NoteCommands_(conductor_.Resume(atCaesura, Now_() + 0.5 / rate_));
    if (!directions_.script && !session_.IsPlaying()) {
      result_.cannotEnd = true;
      result_.message = "nothing leads on from the caesura at " + place;
      return false;
    }
    row = RowHere_();
  }
}

void Renderer::TakeEvents_() {
  for (const StageEvent& event : session_.TakeEvents()) {
    if (event.kind == StageEvent::Kind::LoadFailed) session_.ThrowLoaderError();
    if (event.kind == StageEvent::Kind::AttaccaBrokenOff) session_.Do({CommandKind::Play, 0.0, ""});
  }
}

void Renderer::Act_() {
  NoteCommands_(conductor_.Act());
}

void Renderer::NoteCommands_(const std::vector<Command>& commands) {
  for (const Command& command : commands) {
    const bool moves = command.kind == CommandKind::Seek || command.kind == CommandKind::Left ||
                       command.kind == CommandKind::Right || command.kind == CommandKind::Stop ||
                       command.kind == CommandKind::Next || command.kind == CommandKind::Previous;
    soughtSinceRead_ = soughtSinceRead_ || moves;
  }
  song_ = session_.GetSongNumber();
}

void Renderer::WriteSilence_(long long frames) {
  constexpr long long kBlock = 4096;
  std::vector<float> silence(static_cast<std::size_t>(kBlock) * RenderChannels());
  for (long long left = frames; left > 0; left -= kBlock) {
    const auto count = static_cast<std::size_t>(std::min(left, kBlock));
    std::fill(silence.begin(), silence.end(), 0.0F);
    MixFadeOut(silence.data(), count);
    file_->Write(silence.data(), count);
  }
  result_.frames += frames;
}

TraceRow Renderer::RowAt_(const SongClock& clock, SampleCount sample) const {
  TraceRow row;
  row.outputFrame = result_.frames;
  row.song = song_;
  row.sample = sample;
  row.tick = row.nextTick = clock.SampleToTick(sample);
  return row;
}

// A row without a read, where playback stands.
TraceRow Renderer::RowHere_() {
  const SongClock& clock = session_.GetClock();
  return RowAt_(clock, clock.TickToSample(session_.GetTick()));
}

void Renderer::Report_() {
  if (!listener_.progress) return;
  RenderProgress progress;
  progress.song = song_;
  progress.seconds = Now_();
  progress.fraction = static_cast<double>(session_.GetTick()) / session_.GetClock().GetEndTick();
  listener_.progress(progress);
}

// Nothing is written yet.
std::unique_ptr<Renderer> Open(const RenderOptions& options, const RenderListener& listener) {
  const EndedByInterrupts ended(NotWritten(options), EndedByInterrupts::HangUp::GoesOn);
  return std::make_unique<Renderer>(options, listener);
}

}  // namespace

void Render(const RenderOptions& options, const RenderListener& listener) {
  NoteShow(options.showPath);
  RequireNothingIsOverwritten(options);
  const std::unique_ptr<Renderer> renderer = Open(options, listener);
  try {
    const RenderResult result = renderer->Run();
    if (listener.complete) listener.complete(result);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    renderer->DropFiles();
    if (listener.failed) listener.failed(error);
    throw;
  }
}

}  // namespace orbel::host
