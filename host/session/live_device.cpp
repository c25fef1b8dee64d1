// What Live makes of the audio device: where it plays, and what happens when it fails.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "host/session/live.h"
#include "host/session/shown_text.h"

namespace orbel::host {
namespace {

std::string Whole(double value) {
  return ShortNumber(std::round(value));
}

constexpr std::chrono::milliseconds kSilenceOfTheMeter{250};

// Of full scale; nothing is quieter than -99.
std::string Decibels(float peak) {
  return Whole(peak > 0.0F ? std::max(-99.0, 20.0 * std::log10(static_cast<double>(peak))) : -99.0);
}

}  // namespace

void Live::SayWhereItPlays_() {
  Meters meters;
  if (!ReadMeters(&meters) || meters.recovering) return;
  hasSounded_ = sound_.output != "null";
  unheard_ = meters.unheard;
  if (unheard_.empty()) {
    messages_.push_back((writesFile_ ? "Playing into " : "Playing to ") + Shown(meters.device) + ".");
  } else {
    messages_.push_back("Connected to " + Shown(meters.device) + ".");
    messages_.push_back(Shown(unheard_));
  }
  const std::size_t highest = sound_.outputs.empty()
                                  ? meters.peaks.size()
                                  : *std::max_element(sound_.outputs.begin(), sound_.outputs.end());
  if (sound_.connect.empty() && meters.outputs > 0 && highest > meters.outputs) {
    messages_.push_back("The show wants output " + std::to_string(highest) + " and the device has " +
                        std::to_string(meters.outputs) + (unheard_.empty() ? ": what there is is used" : "") +
                        ". Connect more outputs, or choose with --channels or --connect.");
  }
}

// Nobody waits for the clock where nobody sits at the keys: each look is a hundredth of a second of the show.
// What comes before the first Play is left out.
double Live::PlayIntoFile_(double now) {
  constexpr double kLookSeconds = 0.01;
  const double later = HasItsOwnTime() ? polledAt_ + kLookSeconds : now;
  hasPlayed_ = hasPlayed_ || session_.IsPlaying();
  if (hasPlayed_) PlayIntoFile(later - polledAt_);
  polledAt_ = later;
  return later;
}

void Live::Finish() {
  if (writesFile_) FinishFile();
}

void Live::TakeDeviceUpdates_() {
  const std::vector<notify::DeviceUpdate> updates = session_.TakeDeviceUpdates();
  for (const notify::DeviceUpdate& update : updates) {
    if (update.recovering) {
      DealWithLoss_(update);
    } else {
      DealWithDevice_(update);
    }
  }
  // What was told last is of another device, or of the clock in its place.
  if (!updates.empty()) AskForMeters_();
}

// It is there, though perhaps nobody hears it.
void Live::DealWithDevice_(const notify::DeviceUpdate& update) {
  const std::string before = std::exchange(unheard_, update.unheard);
  const bool wasLost = std::exchange(deviceIsLost_, false);
  hasSounded_ = true;
  if (unheard_.empty() && (wasLost || !before.empty())) {
    messages_.push_back("sound again: " + Shown(update.device) +
                        (isHeld_ ? "; playback is held until " + HowToGoOn_() : ""));
  } else if (wasLost || unheard_ != before) {
    messages_.push_back((wasLost ? "the audio device is back. " : "") + Shown(unheard_));
  }
  const std::string missedBefore = std::exchange(missing_, update.missing);
  if (missing_ == missedBefore) return;
  if (!missing_.empty()) messages_.push_back(Shown(missing_));
  if (missing_.empty() && unheard_.empty() && !wasLost) messages_.push_back("everything is connected again");
}

void Live::DealWithLoss_(const notify::DeviceUpdate& update) {
  if (std::exchange(deviceIsLost_, true)) {
    messages_.push_back("still no audio. " + Shown(update.reason));
    return;
  }
  unheard_.clear();
  missing_.clear();
  if (hasSounded_) ++deviceLosses_;
  const std::string what = "no audio: null device. " + Shown(update.reason);
  const bool plays = session_.IsPlaying();
  if (sound_.onDeviceLoss == "end" && hasSounded_) {
    over_ = true;
    statusAtEnd_ = kDeviceGone;
    messages_.push_back(what + " Playback ends, as --on-device-loss asks.");
  } else if (sound_.onDeviceLoss == "hold" && (plays || (hasSounded_ && ActsAlone_()))) {
    Hold_(what);
  } else {
    messages_.push_back(what + (plays ? " The show runs on unheard" : " Everything else works") +
                        "; a device is looked for every second.");
  }
}

// Neither a script nor whatever acts where nobody sits at the keys goes on then: the show would run away
// unheard, or begin again in a moment that nobody has chosen.
void Live::Hold_(const std::string& what) {
  if (session_.IsPlaying()) session_.Do({CommandKind::Pause, 0.0, ""});
  isHeld_ = true;
  standsSince_.reset();
  messages_.push_back(what + " Playback is held until " + HowToGoOn_() +
                      "; a device is looked for every second.");
}

std::string Live::HowToGoOn_() const {
  return attended_ ? "you press p" : "somebody plays, which takes a terminal; Ctrl-C ends it";
}

// What a library says while something is looked for every second is of interest once.
void Live::TakeSystemLines_(double now) {
  if (!verbose_) return;
  for (const std::string& line : TakeSoundSystemLines()) {
    if (systemLines_.IsNew(line, now)) messages_.push_back(Shown(line));
  }
}

// The output tells ten times a second; before it has, when it has fallen silent because the system grants it
// no thread for that, and at the end, it is asked.
void Live::TakeMeters_() {
  if (std::optional<Meters> told = session_.TakeMeters()) {
    NoteMeters_(std::move(*told));
  } else if (std::chrono::steady_clock::now() - metersNoted_ > kSilenceOfTheMeter) {
    AskForMeters_();
  }
}

void Live::AskForMeters_() {
  Meters meters;
  if (ReadMeters(&meters)) NoteMeters_(std::move(meters));
}

void Live::NoteMeters_(Meters meters) {
  meters_ = std::move(meters);
  hasMeters_ = true;
  metersNoted_ = std::chrono::steady_clock::now();
  highest_.resize(std::max(highest_.size(), meters_.peaks.size()));
  for (std::size_t i = 0; i < meters_.peaks.size(); ++i)
    highest_[i] = std::max(highest_[i], meters_.peaks[i]);
}

std::string Live::SoundText_() const {
  if (!hasMeters_) return "";
  // On a narrow terminal the end is cut off: what a performer must not miss comes first.
  std::string text = "underruns " + std::to_string(meters_.underrunFrames) + " frames  xruns " +
                     std::to_string(meters_.xruns) + "  peak";
  for (const float peak : meters_.peaks) text += " " + Decibels(peak);
  return text + " dB  ring " + Whole(meters_.ringMs) + " ms  latency " + Whole(meters_.latencyMs) +
         " ms  load " + Whole(meters_.loadMedian * 100.0) + " " + Whole(meters_.load999 * 100.0) + " " +
         Whole(meters_.loadLongest * 100.0) + " %";
}

PlayReport Live::GetReport() {
  TakeMeters_();
  AskForMeters_();
  PlayReport report{GetStatus(), meters_, deviceLosses_};
  report.meters.peaks = highest_;
  return report;
}

ExitStatus Live::GetStatusAtEnd() const {
  const bool stayedAway = deviceIsLost_ && (hasSounded_ || soundIsWanted_);
  return statusAtEnd_ == kDone && stayedAway ? kDeviceGone : statusAtEnd_;
}

}  // namespace orbel::host
