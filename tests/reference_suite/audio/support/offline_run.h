#pragma once

#include <memory>
#include <vector>

#include "reference_suite/audio/output/offline_sample_output.h"
#include "tests/reference_suite/audio/support/scripted_player.h"

// An offline output with a scripted player, and everything that it handed out.
struct OfflineRun {
  explicit OfflineRun(std::vector<ScriptedPlayer::Song> songs, double crossfadeMs = 0.0, double fadeMs = 0.0,
                      double rateHz = 48000.0, unsigned channels = 1,
                      tesk_audio::StretchQuality stretch = tesk_audio::StretchQuality::Faster)
      : player(std::move(songs), channels) {
    tesk_audio::OutputSettings settings;
    settings.device = tesk_audio::DeviceKind::Offline;
    settings.crossfadeMs = crossfadeMs;
    settings.fadeMs = fadeMs;
    settings.stretch = stretch;
    output = std::make_unique<tesk_audio::OfflineSampleOutput>(player, rateHz, channels, settings);
    player.SetOutput(output.get());
  }

  void Start() {
    player.RewindAndRefill();
    player.SetPlays(true);
    output->Start();
  }

  // One step; false when the output does not run.
  bool Step() {
    tesk_audio::StepReport fresh;
    const bool ran = output->Step(&fresh, [this](const float* frames, std::size_t count) {
      heard.insert(heard.end(), frames, frames + count * output->GetChannelCount());
    });
    if (ran) report = fresh;
    return ran;
  }

  // Until it does not run any more, or `limit` steps.
  int Run(int limit = 100'000) {
    int steps = 0;
    while (steps < limit && Step()) ++steps;
    return steps;
  }

  ScriptedPlayer player;
  std::unique_ptr<tesk_audio::OfflineSampleOutput> output;
  tesk_audio::StepReport report;  // of the last step
  std::vector<float> heard;
};

// The frames of a song from `from` up to `to`, one channel.
inline void AppendFrames(std::vector<float>* frames, long long from, long long to, int song = 0) {
  for (long long frame = from; frame < to; ++frame) frames->push_back(ScriptedPlayer::Sample(frame, song));
}
inline std::vector<float> Frames(long long from, long long to, int song = 0) {
  std::vector<float> frames;
  AppendFrames(&frames, from, to, song);
  return frames;
}
