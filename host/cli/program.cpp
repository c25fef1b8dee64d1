#include "host/cli/program.h"

#include <poll.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <string_view>

#include "host/cli/verbs.h"
#include "host/session/at_work.h"
#include "host/session/console_lines.h"
#include "host/session/device_setup.h"
#include "host/session/failure.h"
#include "host/session/interrupts.h"
#include "host/session/results.h"
#include "host/session/shown_text.h"
#include "host/session/standard_error.h"
#include "host/session/version.h"

namespace orbel::host::cli {
namespace {

void AddVerbs(CLI::App& app, const Faces& faces, Action* action) {
  AddDemo(app, faces, action);
  AddInfo(app, action);
  AddWhere(app, action);
  AddCheck(app, action);
  AddRender(app, action);
  AddPlay(app, faces, action);
  AddDevices(app, action);
  AddBench(app, faces, action);
  AddSongVerb(app, action);
}

// The words of an error as lines that may be shown: line ends stay, everything else that controls is escaped.
void SayError(const std::string& what) {
  std::size_t begin = 0;
  while (begin <= what.size()) {
    const std::size_t end = std::min(what.find('\n', begin), what.size());
    Say((begin == 0 ? "orbel: " : "       ") + Shown(what.substr(begin, end - begin)));
    begin = end + 1;
  }
}

// A pipe from which nobody reads any more: who looked at the first lines has seen enough.
bool ReaderHasGone() {
  pollfd out{STDOUT_FILENO, 0, 0};
  return ::poll(&out, 1, 0) == 1 && (out.revents & POLLERR) != 0;
}

// Nothing is said to be done while its results are lost.
int RequireWritten(int status) {
  if (Results().flush() || ReaderHasGone()) return status;
  Say("orbel: the results could not be written to standard output; make room where they go");
  return status == kDone ? kFailed : status;
}

int Carry(const Action& action) {
  try {
    const int status = action();
    return RequireWritten(status);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    return SayWhatFailed(error);
  }
}

// Written piece by piece: there is no memory to put words together.
int SayOutOfMemory() {
  std::cerr.clear();  // whatever else there was no memory for
  std::cerr << "orbel: " << AtWork() << (AtWork().empty() ? "" : ": ")
            << "out of memory; close other programs, or shorten the recordings\n";
  return kFailed;
}

// What the command line lacks, and where to read on.
void SayUsage(const CLI::App& app, const std::string& what) {
  std::string verb;
  for (const CLI::App* given : app.get_subcommands()) verb = given->get_name() + " ";
  SayError(what);
  Say("Run \"orbel " + verb + "--help\" for more.");
}

// The library says of a verb that it does not know only that one is missing.
std::string WhyNoVerb(const CLI::App& app, int argc, char** argv) {
  std::string known;
  for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; }))
    known += (known.empty() ? "" : ", ") + verb->get_name();
  if (argc < 2) return "say what to do: " + known;
  const std::string given = argv[1];
  return "there is no \"" + given + "\"; there are " + known;
}

}  // namespace

const char* const kExitStatuses =
    "Exit status: 0 done; 1 a failure while running; 2 wrong usage; 3 the performance cannot end (a vamp\n"
    "or a caesura that nothing leaves); 5 the check found errors; 6 the audio device failed\n"
    "and stayed away.";

void Say(const std::string& message) {
  std::cerr << message << std::endl;
}

int SayWhatFailed(const std::exception& error) {
  SayError(error.what());
  const auto* const failure = dynamic_cast<const Failure*>(&error);
  return failure == nullptr ? kFailed : failure->GetStatus();
}

int RunProgram(int argc, char** argv, const Faces& faces) try {
  TakeStandardError();
  CatchInterrupts();
  SeparateConsoleFromResults();
  KeepDecodersQuiet();
  CLI::App app("Plays the backing tracks of a live show.", "orbel");
  app.set_version_flag("--version", kVersion, "Print the version and end");
  app.require_subcommand(1);
  app.footer(kExitStatuses);
  app.get_formatter()->column_width(34);
  app.get_formatter()->label("SUBCOMMAND", "VERB");
  Action action;
  AddVerbs(app, faces, &action);
  for (CLI::App* verb : app.get_subcommands([](CLI::App*) { return true; })) verb->group("Verbs");
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& help) {
    return RequireWritten(app.exit(help, Results(), std::cerr));
  } catch (const CLI::ParseError& error) {
    SayUsage(app, app.get_subcommands().empty() ? WhyNoVerb(app, argc, argv) : error.what());
    return kUsage;
  }
  return Carry(action);
} catch (const std::bad_alloc&) {
  return SayOutOfMemory();
}

}  // namespace orbel::host::cli
