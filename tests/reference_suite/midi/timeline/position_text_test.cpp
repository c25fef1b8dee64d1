#include "reference_suite/midi/timeline/position_text.h"

#include <gtest/gtest.h>

namespace {

using tesk_midi::ReadPositionText;
using tesk_midi::WrittenPlace;

// "bar 17 beat 3 ticks 120", "tick 5", "end", "none".
std::string Read(const std::string& text) {
  const auto place = ReadPositionText(text);
  if (!place) return "none";
  if (place->kind == WrittenPlace::Kind::End) return "end";
  if (place->kind == WrittenPlace::Kind::Tick) return "tick " + std::to_string(place->ticks);
  return "bar " + std::to_string(place->bar) + " beat " + std::to_string(place->beat) + " ticks " +
         std::to_string(place->ticks);
}

struct Row {
  const char* text;
  const char* read;
};

class PositionTexts : public testing::TestWithParam<Row> {};

TEST_P(PositionTexts, AreReadAsWritten) {
  EXPECT_EQ(Read(GetParam().text), GetParam().read);
}

INSTANTIATE_TEST_SUITE_P(Forms, PositionTexts,
                         testing::Values(Row{"17", "bar 17 beat 1 ticks 0"},
                                         Row{"17.3", "bar 17 beat 3 ticks 0"},
                                         Row{"17.3.120", "bar 17 beat 3 ticks 120"}, Row{"end", "end"},
                                         Row{"tick:30720", "tick 30720"}, Row{"0", "bar 0 beat 1 ticks 0"},
                                         Row{"017", "bar 17 beat 1 ticks 0"},
                                         Row{"17.0", "bar 17 beat 0 ticks 0"}, Row{"tick:0", "tick 0"},
                                         Row{"999999999999999999", "bar 999999999999999999 beat 1 ticks 0"}));

INSTANTIATE_TEST_SUITE_P(
    NoPositions, PositionTexts,
    testing::Values(Row{"", "none"}, Row{"bar", "none"}, Row{"-1", "none"}, Row{"+1", "none"},
                    Row{" 17", "none"}, Row{"17 ", "none"}, Row{"17.", "none"}, Row{".3", "none"},
                    Row{"17.3.", "none"}, Row{"17..3", "none"}, Row{"17.3.120.", "none"},
                    Row{"17.3.120.5", "none"}, Row{"17,3", "none"}, Row{"17.x", "none"},
                    Row{"17.3.x", "none"}, Row{"17.3.1x", "none"}, Row{"17x", "none"}, Row{"tick:", "none"},
                    Row{"tick:x", "none"}, Row{"tick:1.5", "none"}, Row{"tick", "none"},
                    Row{"ticks:1", "none"}, Row{"End", "none"}, Row{"end.1", "none"},
                    Row{"1000000000000000000", "none"}, Row{"1.1000000000000000000", "none"},
                    Row{"1.1.1000000000000000000", "none"}, Row{"tick:1000000000000000000", "none"}));

TEST(PositionTexts, ZeroByteIsNoPosition) {
  EXPECT_EQ(Read(std::string("17\0", 3)), "none");
}

}  // namespace
