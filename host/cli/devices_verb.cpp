#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "host/cli/json_text.h"
#include "host/cli/table.h"
#include "host/cli/verbs.h"
#include "host/session/device_setup.h"
#include "host/session/failure.h"
#include "host/session/interrupts.h"
#include "host/session/output_choice.h"
#include "host/session/results.h"
#include "host/session/shown_text.h"

namespace orbel::host::cli {
namespace {

std::string OrAny(unsigned number) {
  return number == 0 ? "any" : std::to_string(number);
}

// Why a device does not answer, without the advice to come here.
std::string ProblemOf(const DeviceLine& line) {
  const std::string advice = "; \"orbel devices\" lists them";
  const std::size_t at = line.problem.find(advice);
  return at == std::string::npos ? line.problem : std::string(line.problem).erase(at, advice.size());
}

nlohmann::ordered_json ToJson(const DeviceLine& line) {
  nlohmann::ordered_json device{{"output", line.output}, {"name", line.name}, {"answers", line.answers}};
  if (!line.answers) device["problem"] = ProblemOf(line);
  if (line.rateHz > 0.0) device["rate"] = line.rateHz;
  if (line.outputs > 0) device["outputs"] = line.outputs;
  if (line.periodFrames > 0) device["period"] = line.periodFrames;
  return device;
}

std::vector<DeviceLine> Look(const std::string& server) {
  const EndedByInterrupts ended("not every device was looked at", EndedByInterrupts::HangUp::Ends);
  return LookAtDevices(server, &Say);
}

int Run(const std::string& server, bool asJson) {
  const std::vector<DeviceLine> devices = Look(server);
  if (asJson) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const DeviceLine& line : devices) list.push_back(ToJson(line));
    Print({{"devices", list}, {"choice", WhyThisOutput(devices)}});
    return kDone;
  }
  Table table({2, 3, 4});
  table.Add({"output", "name", "rate", "outputs", "period"});
  for (const DeviceLine& line : devices) {
    if (!line.answers) continue;
    table.Add({line.output, Shown(line.name), line.rateHz > 0.0 ? ShortNumber(line.rateHz) : "any",
               OrAny(line.outputs), OrAny(line.periodFrames)});
  }
  Results() << table.ToText("");
  for (const DeviceLine& line : devices) {
    if (!line.answers) Results() << line.output << ": " << Shown(ProblemOf(line)) << std::endl;
  }
  Results() << WhyThisOutput(devices) << std::endl;
  return kDone;
}

}  // namespace

void AddDevices(CLI::App& app, Action* action) {
  CLI::App* verb = app.add_subcommand("devices", "List what can be played to, and say what would be used");
  const auto server = std::make_shared<std::string>();
  const auto asJson = std::make_shared<bool>(false);
  verb->add_option("--device", *server, "JACK: the server, if it is not the usual one");
  verb->add_flag("--json", *asJson, "As JSON");
  verb->callback([=] { *action = [=] { return Run(*server, *asJson); }; });
}

}  // namespace orbel::host::cli
