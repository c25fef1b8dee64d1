#include <CLI/CLI.hpp>
#include <memory>

#include "host/cli/between.h"
#include "host/cli/verbs.h"

namespace orbel::host::cli {

void AddPlay(CLI::App& app, const Faces& faces, Action* action) {
  CLI::App* verb = app.add_subcommand("play", "Play to a device");
  const auto options = std::make_shared<PlayOptions>();
  const auto output = std::make_shared<std::string>("null");
  verb->add_option("SHOW", options->showPath, "The show folder")->required();
  verb->add_option("--output", *output, "null: a clock without sound, the only output of this version")
      ->check(CLI::IsMember({"null"}))
      ->capture_default_str();
  verb->add_option("-n,--song", options->song, "The song to start with; default: the first");
  verb->add_option("--ahead", options->aheadMs, "Milliseconds rendered ahead of the device")
      ->check(Between(1.0, 2000.0))
      ->capture_default_str();
  verb->add_option("--crossfade", options->crossfadeMs, "Milliseconds at jumps; 0 splices bit-exactly")
      ->check(Between(0.0, 1000.0))
      ->capture_default_str();
  verb->add_option("--fade", options->fadeMs, "Milliseconds on start, pause and stop")
      ->check(Between(0.0, 1000.0))
      ->capture_default_str();
  verb->add_option("--script", options->scriptPath, "Rehearsed commands, one a line, as for render");
  verb->add_option("--vamp-passes", options->vampPasses,
                   "Without a terminal: how often a vamp is played in all")
      ->check(WholeBetween(1, 1'000'000))
      ->capture_default_str();
  verb->add_option("--caesura-silence", options->caesuraSilence,
                   "Without a terminal: seconds of wait at a caesura")
      ->check(Between(0.0, 3600.0))
      ->capture_default_str();
  verb->footer(
      std::string(
          "Keys: space go; p play or pause; s stop; a once more (safety); n, b next and previous song;\n"
          "left, right to the place before and after; q quit. Without a terminal nobody can press a\n"
          "key: vamps are left and caesuras waited out by themselves, and song follows song to the\n"
          "end of the show.\n\n") +
      kExitStatuses);
  verb->callback([=] { *action = [=] { return faces.play(*options); }; });
}

}  // namespace orbel::host::cli
