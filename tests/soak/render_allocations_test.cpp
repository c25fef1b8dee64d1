// What a render step allocates: one node of the registry for each read that leaves its tick, and nothing
// else.
#include <gtest/gtest.h>

#include <array>

#include "exc/lock/scope_lock.h"
#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "reference_suite/audio/output/offline_output.h"
#include "reference_suite/audio/output/output_settings.h"
#include "tests/scenarios/show_on_disk.h"
#include "tests/soak/soak_show.h"
#include "tests/support/allocation_watch.h"

namespace soak {
namespace {

constexpr int kReads = 10000;
constexpr long long kQuantum = 264;

class RenderAllocations : public testing::Test {
 protected:
  void Open(const scenarios::SongPlan& song) {
    tesk_audio::OutputSettings settings;
    settings.device = tesk_audio::DeviceKind::Offline;
    tesk_audio::ConfigureOutput(settings);
    show_ = std::make_unique<scenarios::ShowOnDisk>(std::vector{song}, kRate);
    wrapper_ = std::make_unique<AudioPlayerWrapper>(show_->Path().string(), "");
    Player().Play();
    // The first read registers a count that the start of the song has registered already.
    CountInSteps(1);
  }
  AudioPlayer& Player() { return *wrapper_->GetPlayer(); }
  tesk_audio::AudioPlayerOutputInterface& AsOutputSees() { return Player(); }

  // Allocations of each of so many steps, added up by how many there were in the step.
  std::array<int, 4> CountInSteps(int steps) {
    std::array<int, 4> stepsByCount{};
    for (int i = 0; i < steps; ++i) {
      tesk_audio::StepReport report;
      const tesk_audio::FrameSink sink = [](const float*, std::size_t) {};
      const test_support::AllocationWatch watch;
      const bool ran = tesk_audio::StepOfflineOutput(&report, sink);
      const int count = watch.Count();
      EXPECT_TRUE(ran);
      ++stepsByCount[static_cast<std::size_t>(std::min(count, 3))];
    }
    return stepsByCount;
  }

  std::unique_ptr<scenarios::ShowOnDisk> show_;
  std::unique_ptr<AudioPlayerWrapper> wrapper_;
};

TEST_F(RenderAllocations, AStepAllocatesOneNodeOverTenThousandReads) {
  Open(PlainSong(260));
  const std::array<int, 4> steps = CountInSteps(kReads);
  EXPECT_EQ(steps[1], kReads);
}

TEST_F(RenderAllocations, PlanningAllocatesTheNodeAndReadingNothing) {
  Open(PlainSong(260));
  std::array<float, kQuantum> buffer{};
  for (int i = 0; i < kReads; ++i) {
    const exc::ScopeLock lock(AsOutputSees().GetReadSamplesLock());
    const test_support::AllocationWatch planning;
    tesk_audio::SampleCount count =
        AsOutputSees().GetNextReadSampleCount(tesk_audio::SampleCount(kQuantum, 1.0L));
    ASSERT_EQ(planning.Count(), 1) << "read " << i;

    const test_support::AllocationWatch reading;
    long double scale = 0.0L;
    int transposition = 0;
    AsOutputSees().GetDspFactorsAtCurrentSampleIndex(&scale, &transposition);
    ASSERT_EQ(AsOutputSees().ReadSamples(&count, buffer.data()), kQuantum);
    AsOutputSees().GetJumpIsNext();
    AsOutputSees().GetNextCaesuraSampleIndex(AsOutputSees().GetSampleIndex());
    ASSERT_EQ(reading.Count(), 0) << "read " << i;
  }
}

TEST_F(RenderAllocations, AReadInsideItsTickAllocatesNothing) {
  Open(PlainSong(8));
  const exc::ScopeLock lock(AsOutputSees().GetReadSamplesLock());
  ASSERT_EQ(Player().GetSampleIndex() % 25, kQuantum % 25) << "fourteen samples into a tick of 25";
  std::array<float, kQuantum> buffer{};
  const test_support::AllocationWatch watch;
  tesk_audio::SampleCount count = AsOutputSees().GetNextReadSampleCount(tesk_audio::SampleCount(5, 1.0L));
  ASSERT_EQ(AsOutputSees().ReadSamples(&count, buffer.data()), 5);
  EXPECT_EQ(watch.Count(), 0);
}

// The count runs on through a loop, so each pass registers what it reads anew.
TEST_F(RenderAllocations, LoopsAndCutsAllocateNothingOfTheirOwn) {
  scenarios::SongPlan song = PlainSong(60);
  song.loops = {{kPpq, 2 * kPpq, scenarios::LoopKind::Vamp, 0, scenarios::Exit::End}};
  Open(song);
  std::array<int, 4> steps = CountInSteps(kReads);
  EXPECT_EQ(steps[0] + steps[1], kReads) << "two in " << steps[2] << ", more in " << steps[3];
  EXPECT_GT(steps[1], kReads * 9 / 10);
}

TEST_F(RenderAllocations, TheWatchSeesWhatIsAllocated) {
  const test_support::AllocationWatch watch;
  delete new int(1);
  EXPECT_EQ(watch.Count(), 1);
}

}  // namespace
}  // namespace soak
