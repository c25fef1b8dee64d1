#include <gtest/gtest.h>

#include <cstdint>
#include <random>

#include "tests/fakes/planning_show_control.h"
#include "tests/fakes/scripted_how_to_play.h"
#include "tests/ob_show_control/control_fixture.h"

// Whatever the tempos, and wherever the control events lie: between two reads sample and tick position agree,
// no read is longer than was asked for, and one that was cut short ends on the first sample of a tick. Seeds
// are fixed.

namespace {

class RandomReads : public test_support::ControlTest, public testing::WithParamInterface<int> {
 protected:
  RandomReads() : random(static_cast<std::uint64_t>(GetParam())) {
    fakes::planning::GetScript().writesJournal = false;
    fakes::how_to_play::GetScript().writesJournal = false;
    converter.SetSampleRate(Draw(0, 1) == 0 ? 44100.0L : 48000.0L);
    std::vector<test_support::TempoAt> tempos;
    for (unsigned tick = 0; tick < 5000; tick += Draw(1, 500))
      tempos.push_back({tick, Draw(150'000, 2'500'000)});
    Load({.midiEnd = 6000, .audioStart = Draw(0, 1) * Draw(0, 300), .audioEnd = Draw(0, 1) * 5500}, tempos);
    Place(control->GetStartTickIndex());
  }

  unsigned Draw(unsigned from, unsigned to) {
    return std::uniform_int_distribution<unsigned>(from, to)(random);
  }

  // A tick that the next read may reach, drawn so that most reads meet something.
  void DrawEvents(long long request) {
    auto& script = fakes::planning::GetScript();
    auto& stream = fakes::how_to_play::GetScript();
    const unsigned tick = control->GetTickIndex();
    const unsigned end = std::min(converter.SamplesToTicksInteger(control->GetSampleIndex() + request),
                                  control->GetEndTickIndex());
    script.found.clear();
    stream.nextDspEvent = ~0u;
    if (end <= tick) return;
    if (Draw(0, 2) == 0) stream.nextDspEvent = Draw(tick + 1, end);
    if (Draw(0, 1) == 0) script.found = {{.reachedTick = Draw(tick + 1, end)}};
    if (Draw(0, 9) == 0) script.found = {{.replan = true}};
    if (Draw(0, 9) == 0) {
      script.found = {{.jumpPending = true,
                       .reachedTick = Draw(control->GetStartTickIndex(), control->GetEndTickIndex() - 1)}};
      stream.nextDspEvent = ~0u;
    }
  }

  std::mt19937_64 random;
};

TEST_P(RandomReads, KeepTickAndSampleInStep) {
  long long total = 0;
  for (int i = 0; i < 1500; ++i) {
    const long long request = Draw(1, 4000);
    DrawEvents(request);
    const bool jumps =
        !fakes::planning::GetScript().found.empty() && fakes::planning::GetScript().found.front().jumpPending;
    const long long count = Plan(request);
    ASSERT_GE(count, 0);
    ASSERT_LE(count, request);
    control->AddToSampleIndex(count);
    total += count;
    unsigned extra = ~0u;
    ASSERT_EQ(converter.SamplesToTicksInteger(control->GetSampleIndex(), &extra), control->GetTickIndex());
    // After a jump what is left of a request that was cut before it may end anywhere.
    ASSERT_TRUE(count == request || extra == 0 || jumps) << "a read that was cut ends on a tick";
    ASSERT_EQ(control->GetSampleCount(), total);
    ASSERT_LE(control->GetTickIndex(), control->GetEndTickIndex());
    ASSERT_EQ(fakes::how_to_play::GetScript().tick, control->GetTickIndex());
    if (control->GetTickIndex() == control->GetEndTickIndex()) {
      Place(control->GetStartTickIndex());
      total = 0;
    }
  }
}

// What is heard is what was read: the registry leads from any elapsed count back to the tick of that sample.
TEST_P(RandomReads, EveryElapsedSampleIsHeardAtItsTick) {
  converter.SetElapsedSampleCountAtAudioStart(0);
  std::vector<std::pair<long long, long long>> reads;  // elapsed count, sample index
  for (int i = 0; i < 200 && control->GetTickIndex() < control->GetEndTickIndex(); ++i) {
    const long long request = Draw(1, 4000);
    DrawEvents(request);
    const long long count = Plan(request);
    reads.emplace_back(control->GetSampleCount(), control->GetSampleIndex());
    control->AddToSampleIndex(count);
  }
  for (const auto& [elapsed, sample] : reads) {
    ASSERT_EQ(converter.GetTickIndexFromElapsedSampleCount(elapsed), converter.SamplesToTicksRounded(sample));
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomReads, testing::Range(1, 21));

}  // namespace
