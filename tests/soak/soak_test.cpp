// Hours of song time at the speed of the machine: memory stays where it is, and so does the position.
#include <gtest/gtest.h>

#include <cstdlib>

#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "reference_suite/audio/output/output_settings.h"
#include "tests/scenarios/show_on_disk.h"
#include "tests/soak/memory.h"
#include "tests/soak/soak_run.h"
#include "tests/soak/soak_show.h"
#include "tests/support/deleter_clock.h"

namespace soak {
namespace {

constexpr long long kFramesPerMinute = 60LL * kRate;
// What a song decoded in advance leaves for good: its loader's record.
constexpr long long kBytesLeftByALoad = 1024;
constexpr long long kSlack = 65536;
// Decoded songs lie in pages of their own, which the heap knows nothing of. One that stayed would take
// megabytes.
constexpr long long kMostPagesLeft = 8LL * 1024 * 1024;
constexpr long long kPagesLeftByALoad = 32768;  // of the stack of a loader that nobody joins

// ORBEL_SOAK_MINUTES: how much song time in all; the ordinary run has six minutes.
long long MinutesInAll() {
  const char* const wish = std::getenv("ORBEL_SOAK_MINUTES");
  return wish == nullptr ? 6 : std::atoll(wish);
}

class Soak : public testing::Test {
 protected:
  Soak() {
    tesk_audio::OutputSettings settings;
    settings.device = tesk_audio::DeviceKind::Offline;
    settings.crossfadeMs = 0;
    settings.fadeMs = 0;
    tesk_audio::ConfigureOutput(settings);
    test_support::deleter_clock::Hold();
  }
  ~Soak() override { test_support::deleter_clock::LetGo(); }
};

TEST_F(Soak, MemoryStaysFlatAndThePositionExact) {
  const std::vector<scenarios::SongPlan> songs = Songs();
  const scenarios::ShowOnDisk show(songs, kRate);
  auto wrapper = std::make_unique<AudioPlayerWrapper>(show.Path().string(), "");
  SoakRun run(wrapper->GetPlayer(), songs, 1);

  // An eighth of the time is spent in one vamp, where nothing clears the registry.
  const long long total = MinutesInAll() * kFramesPerMinute;
  run.PlayFrames(std::min(total / 8, kFramesPerMinute));  // whatever is allocated once is allocated now
  run.Settle(0);
  const long long heapBefore = HeapBytes();
  const long long residentBefore = ResidentBytes();
  const long long addressesBefore = AddressBytes();
  const int loadsBefore = run.CountLoads();

  run.Settle(songs.size() - 1);
  const long long heapInVamp = HeapBytes();
  run.StayInVamp(total / 8);
  const long long vampBytes = HeapBytes() - heapInVamp;
  run.PlayFrames(total - run.FramesHeard());
  run.Settle(0);
  const long long heapAfter = HeapBytes();
  const long long residentGrowth = ResidentBytes() - residentBefore;
  const int loads = run.CountLoads() - loadsBefore;

  EXPECT_LE(heapAfter - heapBefore, kSlack + kBytesLeftByALoad * loads);
  EXPECT_LE(residentGrowth, kMostPagesLeft + kPagesLeftByALoad * loads);
  // A node of three pointers, a colour, a count and a tick for each read, in the heap's units of 16 bytes.
  const long long reads = total / 8 / 264;
  EXPECT_LE(vampBytes, kSlack + 64 * (reads + reads / 100));
  run.CheckPositionExactly(1000);
  std::fprintf(stderr, "%lld minutes of song time, %d commands, %d loads\n",
               run.FramesHeard() / kFramesPerMinute, run.CountCommands(), run.CountLoads());
  const long long addresses = AddressBytes() - addressesBefore;
  std::fprintf(stderr, "heap %+lld bytes, %.1f a load; resident %+lld bytes; addresses %+.1f MiB a load\n",
               heapAfter - heapBefore, static_cast<double>(heapAfter - heapBefore) / loads, residentGrowth,
               static_cast<double>(addresses) / loads / 1048576.0);
  std::fprintf(stderr, "%lld seconds in a vamp: heap %+lld bytes, %.1f a read\n", total / 8 / kRate,
               vampBytes, static_cast<double>(vampBytes) / static_cast<double>(reads));
  test_support::deleter_clock::LetGo();
}

}  // namespace
}  // namespace soak
