#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "host/cli/json_text.h"
#include "host/cli/not_empty.h"
#include "host/cli/verbs.h"
#include "host/session/drawn_on.h"
#include "host/session/failure.h"
#include "host/session/interrupts.h"
#include "host/session/results.h"
#include "host/session/shown_text.h"

namespace orbel::host::cli {
namespace {

struct Options {
  std::string folder;
  bool json = false;
};

int Run(const Faces& faces, const Options& options) {
  const bool shows = MessagesAreDrawnOn();
  faces.writeDemo(options.folder, [&](const std::string& file) {
    const bool isComplete = file.empty();
    if (!isComplete) RequireUninterrupted(Shown(options.folder) + " was not written");
    if (shows) std::cerr << "\r\x1b[K" << (isComplete ? "" : "making " + Shown(file)) << std::flush;
  });
  if (options.json) {
    Print({{"show", options.folder}});
    return kDone;
  }
  Results() << Shown(options.folder) << '\n';
  Say("A show was written. Play it with: orbel play " + Shown(options.folder));
  return kDone;
}

}  // namespace

void AddDemo(CLI::App& app, const Faces& faces, Action* action) {
  CLI::App* verb = app.add_subcommand("demo", "Write a small complete show that uses every feature");
  const auto options = std::make_shared<Options>();
  verb->add_option("DIR", options->folder, "The folder to write: a new one, an empty one, or an earlier demo")
      ->required()
      ->check(NotEmpty("name", "the folder to write"));
  verb->add_flag("--json", options->json, "Print a JSON object with the folder");
  verb->callback([=] { *action = [=] { return Run(faces, *options); }; });
}

}  // namespace orbel::host::cli
