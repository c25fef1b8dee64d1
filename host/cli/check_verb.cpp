#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>

#include "host/cli/json_text.h"
#include "host/cli/not_empty.h"
#include "host/cli/verbs.h"
#include "host/session/check_show.h"
#include "host/session/drawn_on.h"
#include "host/session/failure.h"
#include "host/session/interrupts.h"
#include "host/session/results.h"
#include "host/session/shown_text.h"

namespace orbel::host::cli {
namespace {

struct Options {
  std::string show;
  bool json = false;
};

using Problems = std::vector<tesk_midi::Problem>;

void PrintJson(const Problems& problems) {
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  for (const tesk_midi::Problem& problem : problems) {
    nlohmann::ordered_json one = {{"severity", problem.isWarning ? "warning" : "error"},
                                  {"file", problem.file}};
    if (problem.line > 0) one["line"] = problem.line;
    if (problem.column > 0) one["column"] = problem.column;
    if (!problem.songNumber.empty()) one["song"] = problem.songNumber;
    one["message"] = problem.message;
    json.push_back(std::move(one));
  }
  Print(json);
}

std::string Count(long long count, const std::string& what) {
  return (count == 0 ? "no" : std::to_string(count)) + " " + what + (count == 1 ? "" : "s");
}

int Run(const Options& options) {
  const auto progress = [](const std::string& file) {
    std::cerr << "\r\x1b[K"
              << "decoding " << file << std::flush;
  };
  const bool shows = MessagesAreDrawnOn() && !options.json;
  Problems problems;
  {
    const EndedByInterrupts ended(Shown(options.show) + " was not checked", EndedByInterrupts::HangUp::Ends);
    problems = CheckShow(options.show, shows ? std::function<void(const std::string&)>(progress) : nullptr);
  }
  if (shows) std::cerr << "\r\x1b[K" << std::flush;
  const auto errors =
      std::count_if(problems.begin(), problems.end(), [](const auto& one) { return !one.isWarning; });
  if (options.json) {
    PrintJson(problems);
  } else {
    for (const tesk_midi::Problem& problem : problems) {
      Results() << (problem.isWarning ? "warning: " : "error: ") << Shown(ToString(problem)) << '\n';
    }
    Results() << Count(errors, "error") << ", "
              << Count(static_cast<long long>(problems.size()) - errors, "warning") << '\n';
  }
  return errors > 0 ? kFoundErrors : kDone;
}

}  // namespace

void AddCheck(CLI::App& app, Action* action) {
  CLI::App* verb = app.add_subcommand("check", "Everything that would fail or surprise on stage");
  const auto options = std::make_shared<Options>();
  verb->add_option("SHOW", options->show, "The show folder")->required()->check(GivesAShow());
  verb->add_flag("--json", options->json, "Print a JSON array with one object a finding");
  verb->callback([=] { *action = [=] { return Run(*options); }; });
}

}  // namespace orbel::host::cli
