#include "Sources/samples_ticks_converter/tempo_segments.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

using samples_ticks_converter::TempoSegment;
using samples_ticks_converter::TempoSegments;

class SomeSegments : public testing::TestWithParam<unsigned> {
 protected:
  SomeSegments() : random_(GetParam()) {
    unsigned tick = Draw(0, 2) == 0 ? Draw(1, 9) : 0;
    long long samples = 0;
    const unsigned count = Draw(1, 60);
    const unsigned beforeTheAudioStart = Draw(0, count);
    for (unsigned index = 0; index < count; ++index) {
      Add({tick, samples, 0.001, 44.1});
      tick += Draw(1, 20);
      if (index >= beforeTheAudioStart && Draw(0, 3) != 0) samples += Draw(1, 50);
    }
  }
  unsigned Draw(unsigned from, unsigned to) {
    return std::uniform_int_distribution<unsigned>(from, to)(random_);
  }
  void Add(const TempoSegment& segment) {
    all_.push_back(segment);
    segments_.Add(segment);
  }
  // Which segment a walk from the first one finds; -1 when none.
  template <typename Precedes>
  int Scan(Precedes precedes) const {
    std::size_t index = 0;
    while (index < all_.size() && precedes(all_[index])) ++index;
    return static_cast<int>(index) - 1;
  }
  void ExpectTheScansAnswer(long long value) {
    const TempoSegment* const bySamples = segments_.FindBySamples(value);
    const int samplesIndex = Scan([value](const TempoSegment& s) { return s.samples <= value; });
    ASSERT_EQ(bySamples == nullptr, samplesIndex < 0) << value;
    if (bySamples != nullptr) {
      ASSERT_EQ(bySamples->tick, all_[static_cast<std::size_t>(samplesIndex)].tick) << value;
    }
    const auto tick = static_cast<unsigned>(std::max(0LL, value));
    const TempoSegment* const byTick = segments_.FindByTick(tick);
    const int tickIndex = Scan([tick](const TempoSegment& s) { return s.tick <= tick; });
    ASSERT_EQ(byTick == nullptr, tickIndex < 0) << value;
    if (byTick != nullptr) {
      ASSERT_EQ(byTick->tick, all_[static_cast<std::size_t>(tickIndex)].tick) << value;
    }
  }
  void ExpectTheScansAnswers() {
    for (long long value = -2; value < 1'500; ++value) ExpectTheScansAnswer(value);
    for (long long value = 1'500; value >= -2; --value) ExpectTheScansAnswer(value);
    for (int i = 0; i < 2'000; ++i) ExpectTheScansAnswer(static_cast<long long>(Draw(0, 1'500)) - 2);
  }

  std::mt19937 random_;
  std::vector<TempoSegment> all_;
  TempoSegments segments_;
};

TEST_P(SomeSegments, AreFoundAsAScanFindsThem) {
  ExpectTheScansAnswers();
}

TEST_P(SomeSegments, AreFoundAsAScanFindsThemAlsoWhereSamplesDecrease) {
  const unsigned count = Draw(1, 9);
  for (unsigned index = 0; index < count; ++index) {
    Add({all_.back().tick + Draw(1, 9), all_.back().samples + Draw(0, 60) - 40, 0.001, 44.1});
  }
  ExpectTheScansAnswers();
}

INSTANTIATE_TEST_SUITE_P(Seeds, SomeSegments, testing::Range(1u, 101u));

TEST(TempoSegments, HaveNoAnswerWhileThereAreNone) {
  TempoSegments segments;
  EXPECT_EQ(segments.FindByTick(5), nullptr);
  EXPECT_EQ(segments.FindBySamples(5), nullptr);
  segments.Add({0, 0, 0.001, 44.1});
  EXPECT_NE(segments.FindBySamples(5), nullptr);
  segments.Clear();
  EXPECT_EQ(segments.FindByTick(5), nullptr);
  EXPECT_EQ(segments.FindBySamples(5), nullptr);
}

}  // namespace
