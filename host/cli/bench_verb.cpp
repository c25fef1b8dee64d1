#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>

#include "host/cli/between.h"
#include "host/cli/json_text.h"
#include "host/cli/table.h"
#include "host/cli/verbs.h"
#include "host/session/bench_live.h"
#include "host/session/drawn_on.h"
#include "host/session/failure.h"
#include "host/session/memory_lock.h"
#include "host/session/results.h"
#include "host/session/shown_text.h"

namespace orbel::host::cli {
namespace {

// A folder for this run, gone with it.
class ScratchFolder {
 public:
  ScratchFolder() {
    // mkdtemp puts letters of its own in the place of the last six.
    std::string name = (std::filesystem::temp_directory_path() / "orbel-bench-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
      throw Failure("no folder can be made in " + std::filesystem::temp_directory_path().string() +
                    "; make room there");
    }
    path_ = name;
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  std::string GetPath() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

double Tenths(double number) {
  return std::round(number * 10.0) / 10.0;
}

// Of no trial there is no figure.
bool IsFigure(double number) {
  return number > 0.0 && std::isfinite(number);
}

std::string Ms(double number) {
  return IsFigure(number) ? ShortNumber(Tenths(number)) : "-";
}

nlohmann::ordered_json MsOrNull(double number) {
  return IsFigure(number) ? nlohmann::ordered_json(Tenths(number)) : nlohmann::ordered_json(nullptr);
}

nlohmann::ordered_json ToJson(const LiveBenchRow& row) {
  return {{"device", row.device},
          {"period", row.periodFrames},
          {"aheadMs", row.aheadMs},
          {"latencyMs", Tenths(row.latencyMs)},
          {"vamp",
           {{"trials", row.goTrials},
            {"latestGoThatLeftMs", MsOrNull(row.goLeaves)},
            {"earliestGoTooLateMs", MsOrNull(row.goTooLate)},
            {"boundMs", Tenths(row.goBound)}}},
          {"caesura",
           {{"trials", row.caesuraTrials},
            {"goToSoundMedianMs", MsOrNull(row.soundsMedian)},
            {"goToSoundLongestMs", MsOrNull(row.soundsLongest)},
            {"boundMs", Tenths(row.soundsBound)}}},
          {"disturbed", row.disturbed},
          {"underrunFrames", row.underrunFrames},
          {"xruns", row.xruns}};
}

std::vector<std::string> ToCells(const LiveBenchRow& row) {
  return {std::to_string(row.periodFrames),
          Ms(row.goLeaves),
          Ms(row.goTooLate),
          Ms(row.goBound),
          Ms(row.soundsMedian),
          Ms(row.soundsLongest),
          Ms(row.soundsBound),
          std::to_string(row.goTrials + row.caesuraTrials),
          std::to_string(row.disturbed),
          std::to_string(row.underrunFrames),
          std::to_string(row.xruns)};
}

constexpr char kLegend[] =
    "Milliseconds. in time: the latest go that left a vamp, before the device plays its end; too late: the\n"
    "earliest that did not, and what that may be at most (what is rendered ahead, one period, 1 ms).\n"
    "sounds: from go at a caesura until the next frame, half of them, the longest, and at most (ahead, one\n"
    "period, 5 ms). held up: trials that do not count, since the machine stood still meanwhile. underruns:\n"
    "in frames. Figures of this machine as it is now.";

int Run(const Faces& faces, LiveBenchOptions options, bool asJson) {
  const ScratchFolder folder;
  faces.writeBenchShow(folder.GetPath());
  options.showPath = folder.GetPath();
  const std::string warning = LockMemory();
  if (!warning.empty()) Say("orbel: " + warning);
  nlohmann::ordered_json rows = nlohmann::ordered_json::array();
  Table table({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  table.Add({"period", "in time", "too late", "at most", "sounds", "longest", "at most", "trials", "held up",
             "underruns", "xruns"});
  BenchLive(options, &Say, [&](const LiveBenchRow& row) {
    rows.push_back(ToJson(row));
    table.Add(ToCells(row));
    if (MessagesAreDrawnOn()) Say("period " + std::to_string(row.periodFrames) + ": done");
  });
  if (asJson) {
    Print(rows);
    return kDone;
  }
  Results() << options.output << ", " << ShortNumber(options.sound.aheadMs) << " ms ahead" << std::endl
            << table.ToText("") << kLegend << std::endl;
  return kDone;
}

}  // namespace

void AddBench(CLI::App& app, const Faces& faces, Action* action) {
  CLI::App* verb = app.add_subcommand("bench", "Measure how this machine plays");
  verb->require_subcommand(1);
  CLI::App* live = verb->add_subcommand(
      "live", "How late go may be pressed in a vamp, and how soon it sounds at a caesura");
  const auto options = std::make_shared<LiveBenchOptions>();
  const auto asJson = std::make_shared<bool>(false);
  live->add_option("--output", options->output, "null: a clock without sound; jack; desktop")
      ->check(CLI::IsMember({"null", "jack", "desktop"}))
      ->capture_default_str();
  live->add_option("--device", options->sound.device,
                   "The JACK server, or the output of the desktop, if it is not the usual one");
  live->add_option("--period", options->periods,
                   "Frames that the device takes at a time, one after the other; a JACK server has its own")
      ->delimiter(',')
      ->check(WholeBetween(16, 8192))
      ->capture_default_str();
  live->add_option("--ahead", options->sound.aheadMs, "Milliseconds rendered ahead of the device")
      ->check(Between(1.0, 2000.0))
      ->capture_default_str();
  live->add_option("--trials", options->trials, "Times that go is pressed, of each kind and period")
      ->check(WholeBetween(1, 100'000))
      ->capture_default_str();
  live->add_flag("--json", *asJson, "As JSON");
  live->callback([=] { *action = [=] { return Run(faces, *options, *asJson); }; });
}

}  // namespace orbel::host::cli
