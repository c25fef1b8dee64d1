#pragma once

#include <exception>
#include <functional>
#include <string>

#include "host/cli/program.h"

namespace CLI {
class App;
}

namespace orbel::host::cli {

// What the verb that was given does, once the whole line is understood; returns the exit status.
using Action = std::function<int()>;

// Each adds one verb with its options to `app`; when the verb is given, `*action` is set. What the options
// write to belongs to the action and lives as long as `app`.
void AddDemo(CLI::App& app, const Faces& faces, Action* action);
void AddInfo(CLI::App& app, Action* action);
void AddWhere(CLI::App& app, Action* action);
void AddCheck(CLI::App& app, Action* action);
void AddRender(CLI::App& app, Action* action);
void AddPlay(CLI::App& app, const Faces& faces, Action* action);
void AddDevices(CLI::App& app, Action* action);
void AddBench(CLI::App& app, const Faces& faces, Action* action);
void AddSongVerb(CLI::App& app, Action* action);

// The last lines of every help.
extern const char* const kExitStatuses;

// One line on standard error.
void Say(const std::string& message);
// The words of an error on standard error; returns the exit status that goes with it.
int SayWhatFailed(const std::exception& error);

}  // namespace orbel::host::cli
