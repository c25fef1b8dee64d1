#include "reference_suite/audio/output/offline_sample_output.h"

#include "reference_suite/audio/output/format_fit.h"
#include "reference_suite/audio/output/frames_of.h"
#include "reference_suite/audio/output/go_on_attacca.h"
#include "reference_suite/audio/output/offline_registry.h"

namespace tesk_audio {

OfflineSampleOutput::OfflineSampleOutput(AudioPlayerOutputInterface& player, double rateHz, unsigned channels,
                                         const OutputSettings& settings)
    : player_(player),
      rateHz_(rateHz),
      channels_(channels),
      fadeFrames_(FramesOf(settings.fadeMs, rateHz)),
      step_(player, channels, rateHz, settings.crossfadeMs, settings.stretch, StretchPace::AtLeisure,
            fadeFrames_),
      fade_(channels),
      tail_(fadeFrames_, channels),
      seekFlag_("AudioSampleOutput_Seek") {
  OfflineRegistry::Instance().Add(this);
}

OfflineSampleOutput::~OfflineSampleOutput() {
  OfflineRegistry::Instance().Remove(this);
}

void OfflineSampleOutput::Refill() {
  idle_ = false;
  switched_ = false;
  elapsed_ = 0;
  afterRefill_ = true;
  fade_.Set(true);
  step_.Reset();
}

void OfflineSampleOutput::Start() {
  idle_ = false;
  if (state_ == State::Running) return;
  if (!afterRefill_ && fadeFrames_ > 0) {
    fade_.Set(false);
    fade_.StartIn(fadeFrames_);
  }
  state_ = State::Running;
}

void OfflineSampleOutput::Pause() {
  if (state_ != State::Running) return;
  state_ = State::Paused;
  DropTail_();
}

bool OfflineSampleOutput::Stop(bool /*wait*/) {
  const State before = state_.exchange(State::Stopped);
  if (before == State::Running) DropTail_();
  if (before != State::Stopped) player_.NotifyOutputHasStopped();
  return true;
}

bool OfflineSampleOutput::SwitchContent(const AudioSampleContent& content, std::string* errorText) {
  if (!FormatFits(content, rateHz_, channels_, errorText)) return false;
  switched_ = true;
  return true;
}

void OfflineSampleOutput::Idle() {
  idle_ = true;
}

void OfflineSampleOutput::PrepareForExit() {
  step_.Reset();  // nobody will hear what would have come
  Stop(true);
}

bool OfflineSampleOutput::MayStep() {
  return state_ == State::Running && !idle_ && !seekFlag_.GetIsSet();
}

bool OfflineSampleOutput::Step(StepReport* report, const FrameSink& sink) {
  if (!MayStep()) return false;
  // Another song: nothing of the one before goes on under it.
  if (switched_.exchange(false)) step_.Reset();
  const StepResult result = step_.Run(*this);
  if (result.outcome == StepOutcome::Refused) return false;
  if (result.moved) FadeTailOut_();
  *report = StepReport();
  report->sampleIndex = result.sampleIndex;
  report->frames = result.frames;
  report->outputFrames = static_cast<long long>(result.deviceFrames);
  report->scale = result.factors.scale;
  report->transposition = result.factors.semitones;
  report->jumpFrom = result.jumpFrom;
  report->jumpTo = result.jumpTo;
  if (result.outcome == StepOutcome::Frames) {
    if (result.jumped) report->event = StepEvent::Jump;
    HandOut_(result, sink);
  } else if (result.outcome == StepOutcome::Caesura) {
    report->event = StepEvent::Caesura;
    StopAtCaesura_();
  } else {
    report->event = EndSong_() ? StepEvent::Attacca : StepEvent::End;
  }
  return true;
}

void OfflineSampleOutput::HandOut_(const StepResult& result, const FrameSink& sink) {
  const std::size_t count = result.deviceFrames;
  if (result.moved && fadeFrames_ > 0) {
    fade_.Set(false);
    fade_.StartIn(fadeFrames_);
  }
  fade_.Apply(step_.Frames(), count);
  tail_.MixInto(step_.Frames(), count);
  afterRefill_ = false;
  elapsed_ += result.frames;
  sink(step_.Frames(), count);
}

void OfflineSampleOutput::DropTail_() {
  if (fadeFrames_ == 0) return;
  step_.DropTail();
  FadeTailOut_();
}

// Where less than a whole fade is left before a caesura, it is steeper.
void OfflineSampleOutput::FadeTailOut_() {
  Fade fade = fade_;
  fade.StartOut(fadeFrames_, step_.GetTailFrames());
  const std::size_t count = fade.GetLeft();
  fade.Apply(step_.Tail(), count);
  tail_.Add(step_.Tail(), count);
}

void OfflineSampleOutput::StopAtCaesura_() {
  player_.NotifyApproachingStop();
  state_ = State::Paused;
  player_.PauseAndClearApproachingStop();
  if (player_.OnCaesuraStop()) player_.Play();
}

bool OfflineSampleOutput::EndSong_() {
  const bool goesOn = GoOnAttacca(player_);
  // The attacca itself switched the content and moved the position.
  switched_ = false;
  step_.ForgetPosition();
  if (goesOn) return true;
  Stop(false);
  return false;
}

}  // namespace tesk_audio
