// Plays again what fuzzing began with and every input that ever broke a promise.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/targets/targets.h"

namespace {

struct Target {
  const char* name;
  void (*run)(fuzz::Bytes input);
};

void PrintTo(const Target& target, std::ostream* out) {
  *out << target.name;
}

// In the order of their names, so that every run is the same.
std::vector<std::filesystem::path> Inputs(const std::string& kind, const std::string& target) {
  std::vector<std::filesystem::path> inputs;
  const std::filesystem::path folder = std::filesystem::path(ORBEL_FUZZ_FOLDER) / kind / target;
  if (!std::filesystem::is_directory(folder)) return inputs;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) inputs.push_back(entry.path());
  std::sort(inputs.begin(), inputs.end());
  return inputs;
}

class FuzzRegression : public testing::TestWithParam<Target> {
 protected:
  // A target ends the process when a promise is broken: the trace says in which input.
  static void Play(const std::filesystem::path& input) {
    SCOPED_TRACE(input.string());
    std::ifstream in(input, std::ios::binary);
    const std::vector<char> text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    std::cerr << input.filename().string() << std::endl;
    GetParam().run(bytes);
  }
};

TEST_P(FuzzRegression, SeedsAndOldCrashesKeepEveryPromise) {
  const auto seeds = Inputs("corpus", GetParam().name);
  ASSERT_FALSE(seeds.empty());
  for (const auto& input : seeds) Play(input);
  for (const auto& input : Inputs("crashes", GetParam().name)) Play(input);
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzRegression,
                         testing::Values(Target{"smf", fuzz::Smf}, Target{"cues", fuzz::Cues},
                                         Target{"positions", fuzz::Positions}, Target{"audio", fuzz::Audio},
                                         Target{"script", fuzz::Script}, Target{"planner", fuzz::Planner}),
                         [](const auto& target) { return std::string(target.param.name); });

}  // namespace
