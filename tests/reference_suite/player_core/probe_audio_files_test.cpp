#include <gtest/gtest.h>

#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "suite/audio/create.h"
#include "tests/reference_suite/player_core/support/opened_show.h"

namespace {

TEST(ProbeAudioFiles, EachOfManyIsLookedAtOnceWhateverIsWrongWithOthers) {
  std::mutex mutex;
  std::map<std::string, int> looks;
  test_support::TheOpenedShow().probe = [&](const std::string& path) -> tesk_audio::AudioFileInfo {
    const std::lock_guard lock(mutex);
    ++looks[path];
    if (path == "7") throw std::runtime_error("damaged");
    return {};
  };
  const bool isAlone = std::thread::hardware_concurrency() < 2;
  for (const int count : {0, 1, 7, 8, 100}) {
    looks.clear();
    std::vector<std::string> paths;
    std::map<std::string, int> once;
    for (int index = 0; index < count; ++index) {
      paths.push_back(std::to_string(index));
      if (count >= 8 && !isAlone) once[paths.back()] = 1;
    }
    tesk_audio::ProbeAudioFiles(paths);
    EXPECT_EQ(looks, once) << count << " files; few are left for who asks";
  }
}

}  // namespace
