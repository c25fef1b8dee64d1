#include "host/session/bench_live.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <random>
#include <thread>

#include "host/session/failure.h"
#include "host/session/heard_clock.h"
#include "host/session/interrupts.h"
#include "host/session/output_choice.h"
#include "host/session/session.h"
#include "host/session/shown_text.h"
#include "host/session/song_clock.h"

namespace orbel::host {
namespace {

constexpr double kMillisecond = 1e-3;
constexpr double kDisturbance = 1.0 * kMillisecond;
constexpr double kLongestWait = 5.0;

double Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void SleepFor(double seconds) {
  std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

// One period's measurements, on a player of its own.
class Trials {
 public:
  Trials(const LiveBenchOptions& options, const OutputChoice& sound)
      : session_(options.showPath, "1", OutputKind::Live, sound), count_(options.trials) {
    Meters meters;
    if (!ReadMeters(&meters) || meters.recovering) {
      throw Failure("There is no device to measure. " + WhatIsWrong_());
    }
    row_.device = meters.device;
    row_.periodFrames = meters.periodFrames;
    row_.latencyMs = meters.latencyMs;
    row_.aheadMs = sound.aheadMs;
    rateHz_ = session_.GetClock().GetSampleRateHz();
    const double both = row_.aheadMs + 1000.0 * meters.periodFrames / rateHz_;
    row_.goBound = both + 1.0;
    row_.soundsBound = both + 5.0;
  }

  LiveBenchRow Run() {
    MeasureVamp_();
    MeasureCaesura_();
    Meters meters;
    ReadMeters(&meters);
    RequireDevice_();
    row_.underrunFrames = meters.underrunFrames;
    row_.xruns = meters.xruns;
    return row_;
  }

 private:
  struct Press {
    double lead = 0.0;  // seconds before the vamp's end is played
    bool disturbed = false;
    bool left = false;
  };

  void MeasureVamp_() {
    row_.goLeaves = std::numeric_limits<double>::infinity();
    // Where it turns from in time to too late depends on where in a period the vamp's end lies.
    const double widest = row_.goBound + 2.0;
    std::uniform_real_distribution<double> leads(std::max(0.0, row_.aheadMs - 4.0), widest);
    for (int i = 0; i < count_ && InterruptCount() == 0; ++i) {
      const Press press = PressInVamp_(leads(random_) * kMillisecond);
      if (press.disturbed) {
        ++row_.disturbed;
        continue;
      }
      ++row_.goTrials;
      double& figure = press.left ? row_.goLeaves : row_.goTooLate;
      const double lead = press.lead / kMillisecond;
      figure = press.left ? std::min(figure, lead) : std::max(figure, lead);
    }
    if (row_.goTrials == 0) row_.goLeaves = 0.0;
  }

  // Plays the vamp from its start and presses go that long before its end is played.
  Press PressInVamp_(double lead) {
    const long long start = session_.GetClock().Find("2").sample;
    const long long end = session_.GetClock().Find("3").sample - start;
    StandAt_("2");
    session_.Do({CommandKind::Play, 0.0, ""});
    HeardClock clock(rateHz_);
    Press press;
    double playedAt = WaitUntil_(&clock, end, lead);
    const double pressed = Now();
    session_.Do({CommandKind::Go, 0.0, ""});
    press.disturbed = Now() - pressed > kDisturbance;
    for (; Now() < playedAt + 20 * kMillisecond; SleepFor(0.2 * kMillisecond)) {
      clock.Look(Now(), session_.GetElapsedFrames());
      playedAt = PlayedAt_(clock, end).value_or(playedAt);
    }
    press.lead = playedAt - pressed;
    press.left = session_.GetTick() > session_.GetClock().Find("3").tick;
    for (const StageEvent& event : session_.TakeEvents()) {
      if (event.kind == StageEvent::Kind::LoopPass && event.pass > 1) press.left = false;
    }
    return press;
  }

  // When the device plays a frame.
  std::optional<double> PlayedAt_(const HeardClock& clock, long long frame) const {
    const std::optional<double> heard = clock.WhenHeard(frame);
    if (!heard) return std::nullopt;
    return *heard - row_.latencyMs * kMillisecond;
  }

  double WaitUntil_(HeardClock* clock, long long end, double lead) {
    const double deadline = Now() + kLongestWait;
    while (Now() < deadline) {
      clock->Look(Now(), session_.GetElapsedFrames());
      const std::optional<double> playedAt = PlayedAt_(*clock, end);
      if (playedAt && Now() >= *playedAt - lead) return *playedAt;
      SleepFor(0.1 * kMillisecond);
    }
    throw Failure(row_.device + " takes no sound. Close other programs, or choose another output.");
  }

  void MeasureCaesura_() {
    session_.LoadStopped("2");
    std::vector<double> waits;
    for (int i = 0; i < count_ && InterruptCount() == 0; ++i) {
      const double wait = GoAtCaesura_() / kMillisecond - row_.latencyMs;
      if (wait > 0.0) waits.push_back(wait);
    }
    row_.caesuraTrials = static_cast<int>(waits.size());
    if (waits.empty()) return;
    std::sort(waits.begin(), waits.end());
    row_.soundsMedian = waits[waits.size() / 2];
    row_.soundsLongest = waits.back();
  }

  // Seconds from go until the next frame is heard.
  double GoAtCaesura_() {
    StandAt_("1");
    session_.Do({CommandKind::Play, 0.0, ""});
    const double deadline = Now() + kLongestWait;
    while (!session_.IsWaiting() && Now() < deadline) {
      session_.TakeEvents();
      SleepFor(kMillisecond);
    }
    SleepFor(std::uniform_real_distribution<double>(0.05, 0.08)(random_));
    session_.TakeEvents();
    const long long before = session_.GetElapsedFrames();
    const double pressed = Now();
    session_.Do({CommandKind::Go, 0.0, ""});
    while (session_.GetElapsedFrames() <= before) {
      if (Now() > deadline) throw Failure(row_.device + " does not go on after a caesura.");
      SleepFor(0.1 * kMillisecond);
    }
    return Now() - pressed;
  }

  // As it was told.
  std::string WhatIsWrong_() {
    std::string reason;
    for (const notify::DeviceUpdate& update : session_.TakeDeviceUpdates()) {
      if (update.recovering) reason = update.reason;
    }
    return Shown(reason);
  }

  // What a clock is measured to do in its place is no figure of the device.
  void RequireDevice_() {
    const std::string lost = WhatIsWrong_();
    if (!lost.empty())
      throw Failure("The device was lost while it was measured. " + lost + " Measure again when it is back.");
  }

  void StandAt_(const std::string& position) {
    RequireDevice_();
    session_.Do({CommandKind::Stop, 0.0, ""});
    session_.Do({CommandKind::Seek, 0.0, position});
    session_.TakeEvents();
  }

  Session session_;
  const int count_;
  LiveBenchRow row_;
  double rateHz_ = 48'000.0;
  std::mt19937 random_{1};
};

}  // namespace

void BenchLive(const LiveBenchOptions& options, const Say& say,
               const std::function<void(const LiveBenchRow&)>& tell) {
  OutputChoice sound = ChooseOutput(options.output, options.sound, say);
  std::vector<int> periods = options.periods;
  if (sound.output == "jack" || sound.output == "auto") periods.resize(1);
  for (const int period : periods) {
    if (InterruptCount() > 0) return;
    sound.periodFrames = static_cast<unsigned>(period);
    tell(Trials(options, sound).Run());
  }
}

}  // namespace orbel::host
