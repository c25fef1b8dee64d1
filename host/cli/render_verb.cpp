#include <CLI/CLI.hpp>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "host/cli/between.h"
#include "host/cli/not_empty.h"
#include "host/cli/verbs.h"
#include "host/session/device_setup.h"
#include "host/session/drawn_on.h"
#include "host/session/failure.h"
#include "host/session/render.h"
#include "host/session/shown_text.h"
#include "suite/audio/sample_rates.h"

namespace orbel::host::cli {
namespace {

// Writes one line over and over; gone when it is destroyed.
class ProgressBar {
 public:
  ProgressBar() = default;
  ~ProgressBar() {
    if (isShown_) std::cerr << "\r\x1b[K" << std::flush;
  }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  void Show(const RenderProgress& progress) {
    const int step = static_cast<int>(progress.fraction * 40.0);
    if (step == last_) return;
    last_ = step;
    isShown_ = true;
    const auto done = static_cast<std::size_t>(std::clamp(step, 0, 40));
    std::cerr << "\r\x1b[K[" << std::string(done, '#') << std::string(40 - done, '.') << "] song "
              << Shown(progress.song) << "  " << MinutesAndSeconds(progress.seconds) << std::flush;
  }

  // Stands in the bar's place until that moves on.
  void Wait(const std::string& text) {
    last_ = -1;
    isShown_ = true;
    std::cerr << "\r\x1b[K" << text << std::flush;
  }

 private:
  int last_ = -1;
  bool isShown_ = false;
};

int Tell(const RenderOptions& options, const RenderResult& result) {
  for (const std::string& problem : result.problems)
    Say((problem.starts_with("warning: ") ? "" : "orbel: ") + Shown(problem));
  if (!result.message.empty()) Say("orbel: " + result.message);
  Say(Shown(options.outPath) + ": " + MinutesAndSeconds(result.seconds) + ", " +
      std::to_string(result.frames) + " frames");
  return result.cannotEnd ? kCannotEnd : kDone;
}

int Run(const RenderOptions& options) {
  const std::string warning = WhatNameHides(options.outPath, options.format);
  if (!warning.empty()) Say("warning: " + warning);
  auto bar = std::make_unique<ProgressBar>();
  RenderListener listener;
  if (MessagesAreDrawnOn()) {
    listener.progress = [&](const RenderProgress& progress) { bar->Show(progress); };
    listener.waiting = [&](const std::string& text) { bar->Wait(text); };
  }
  // The file is there: the program ends without taking the engine down, whose threads may sleep for a second
  // or decode songs that nobody will hear.
  listener.complete = [&](const RenderResult& result) {
    bar.reset();
    const int status = Tell(options, result);
    std::cout.flush();
    std::cerr.flush();
    std::_Exit(status);
  };
  listener.failed = [&](const std::exception& error) {
    bar.reset();
    const int status = SayWhatFailed(error);
    std::cout.flush();
    std::cerr.flush();
    std::_Exit(status);
  };
  Render(options, listener);
  return kDone;
}

}  // namespace

void AddRender(CLI::App& app, Action* action) {
  CLI::App* verb = app.add_subcommand("render", "Play into a sound file, faster than real time");
  const auto options = std::make_shared<RenderOptions>();
  verb->add_option("SHOW", options->showPath, "The show folder")->required()->check(GivesAShow());
  verb->add_option("-o,--output", options->outPath, "The sound file to write")
      ->required()
      ->check(NotEmpty("name", "the sound file to write"));
  verb->add_option("-n,--song", options->song,
                   "The song to start with; default: the first that has audio,\n"
                   "and no other when that cannot be played")
      ->check(GivesASong());
  verb->add_option("--from", options->from, "The position to start at, for instance 17 or 17.3");
  verb->add_option("--vamp-passes", options->vampPasses,
                   "Without a script: how often a vamp is played in all")
      ->check(WholeBetween(1, 1'000'000))
      ->capture_default_str();
  verb->add_option("--caesura-silence", options->caesuraSilence,
                   "Without a script: seconds of silence at a caesura")
      ->check(Between(0.0, 3600.0))
      ->capture_default_str();
  verb->add_option("--script", options->scriptPath, "Commands to act on, one a line")
      ->check(NotEmpty("name", "the script"));
  verb->add_option("--trace", options->tracePath,
                   "A CSV file with one row a read; a pipe or a device\n"
                   "is given the rows as they come")
      ->check(NotEmpty("name", "the CSV file to write"));
  verb->add_option("--crossfade", options->crossfadeMs,
                   "Milliseconds at jumps; 0 splices bit-exactly what is played as recorded.\n"
                   "At other tempos and in other keys from 5 to 10, whatever is given")
      ->check(Between(0.0, 1000.0))
      ->capture_default_str();
  verb->add_option("--fade", options->fadeMs,
                   "Milliseconds where a script pauses, stops, plays on or seeks; out no longer than 5.5")
      ->check(Between(0.0, 1000.0))
      ->capture_default_str();
  verb->add_option("--stretch", options->stretch,
                   "Other tempos and keys: faster, or finer in pitch and level")
      ->check(CLI::IsMember({"faster", "finer"}))
      ->capture_default_str();
  verb->add_option("--rate", options->rateHz, "Frames per second; default: those of the song's audio")
      ->check(WholeBetween(tesk_audio::kLeastSampleRateHz, tesk_audio::kMostSampleRateHz));
  verb->add_option("--format", options->format, "float, pcm24 or pcm16 (WAV), flac or ogg")
      ->check(CLI::IsMember({"float", "pcm24", "pcm16", "flac", "ogg"}))
      ->capture_default_str();
  verb->callback([=] { *action = [=] { return Run(*options); }; });
}

}  // namespace orbel::host::cli
