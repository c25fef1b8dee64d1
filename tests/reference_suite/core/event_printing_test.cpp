#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <locale>
#include <sstream>

#include "suite/core/change_log_events.h"
#include "suite/core/sequence.h"
#include "suite/core/timeline_events.h"

namespace {

std::string Text(const cmn::TESKEvent& event) {
  std::ostringstream out;
  event.WriteString(out);
  return out.str();
}

std::string Text(const cmn::TESKSequence& sequence) {
  std::ostringstream out;
  sequence.WriteString(out);
  return out.str();
}

// Thousands in groups, as some locales write them.
class Grouped : public std::numpunct<char> {
 protected:
  char do_thousands_sep() const override { return '.'; }
  char do_decimal_point() const override { return ','; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(EventPrinting, TimelineEvents) {
  EXPECT_EQ(Text(TL::Tempo(960, 500000)), "Tempo(abs_time=960, microseconds_per_quarter=500000)");
  EXPECT_EQ(Text(TL::Meter(0, 6, 8)), "Meter(abs_time=0, meter=6/8)");
  EXPECT_EQ(Text(TL::Key(1, -3, true)), "Key(abs_time=1, sharps=-3, mode=minor)");
  EXPECT_EQ(Text(TL::Key(1, 2, false)), "Key(abs_time=1, sharps=2, mode=major)");
  EXPECT_EQ(Text(TL::PageNum(7, 12)), "PageNum(abs_time=7, number=12)");
  EXPECT_EQ(Text(TL::BarsBeats(1920, 0, 4, 480)),
            "BarsBeats(abs_time=1920, bar=0, beats=4, ticks_per_beat=480)");
}

TEST(EventPrinting, ChangeLogEvents) {
  EXPECT_EQ(Text(CL::Loop(960, 1920, codes::kVamp, 0, CL::VampExit::NextBar, 3)),
            "Vamp(abs_time=960, end_time=1920, line=3)");
  EXPECT_EQ(Text(CL::Loop(960, 1920, codes::kRepeat, 2, CL::VampExit::EndOfPass, 0)),
            "Repeat(abs_time=960, end_time=1920, line=0)");
  EXPECT_EQ(Text(CL::Loop(960, 1920, codes::kSafety, 1, CL::VampExit::EndOfPass, 0)),
            "Safety(abs_time=960, end_time=1920, line=0)");
  EXPECT_EQ(Text(CL::Cut(5, 9, 1)), "Cut(abs_time=5, end_time=9, line=1)");
  EXPECT_EQ(Text(CL::Click(5, 9, 1)), "Click(abs_time=5, end_time=9, line=1)");
  EXPECT_EQ(Text(CL::Caesura(5, 8)), "Caesura(abs_time=5, line=8)");
  EXPECT_EQ(Text(CL::TempoScale(5, 0.95, 8)), "TempoScale(abs_time=5, scale=0.95, line=8)");
  EXPECT_EQ(Text(CL::Transpose(5, -2, 8)), "Transpose(abs_time=5, semitones=-2, line=8)");
  EXPECT_EQ(Text(CL::Marker(5, "Dialogue", 8)), "Marker(abs_time=5, name=\"Dialogue\", line=8)");
}

TEST(EventPrinting, AMarkersNameStaysOneLineAndCannotSteerATerminal) {
  EXPECT_EQ(Text(CL::Marker(5, "a\nb\t\x1b[2J\x7f", 8)),
            "Marker(abs_time=5, name=\"a\\nb\\t\\x1b[2J\\x7f\", line=8)");
}

TEST(EventPrinting, SequenceHasNameCodeAndCount) {
  cmn::SequenceTemplate<TL::Tempo> tempos;
  EXPECT_EQ(Text(tempos), "TempoSequence(code=1, event count = 0)");
  tempos.Add(TL::Tempo(0, 500000));
  tempos.Add(TL::Tempo(960, 400000));
  EXPECT_EQ(Text(tempos), "TempoSequence(code=1, event count = 2)");
  EXPECT_EQ(Text(cmn::SequenceTemplate<CL::Marker>()), "MarkerSequence(code=71, event count = 0)");
}

TEST(EventPrinting, TheStreamsLocaleAndBaseChangeNothing) {
  std::ostringstream out;
  out.imbue(std::locale(std::locale::classic(), new Grouped));
  out << std::hex << std::showbase;
  TL::Tempo(96000, 500000).WriteString(out);
  CL::TempoScale(5, 1.25, 8).WriteString(out);
  cmn::SequenceTemplate<CL::Marker>().WriteString(out);
  EXPECT_EQ(out.str(),
            "Tempo(abs_time=96000, microseconds_per_quarter=500000)"
            "TempoScale(abs_time=5, scale=1.25, line=8)"
            "MarkerSequence(code=71, event count = 0)");
}

TEST(EventPrinting, IntoAConsoleBufferItIsTheSameText) {
  testing::internal::CaptureStdout();
  {
    exc::CoutBuffer out;
    TL::PageNum(7, 12).WriteString(out);
    cmn::SequenceTemplate<TL::Meter>().WriteString(out);
    out << exc::EndlT();
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "PageNum(abs_time=7, number=12)MeterSequence(code=2, event count = 0)\n");
}

TEST(EventCodes, EveryCodeHasItsName) {
  const std::pair<int, const char*> names[] = {
      {1, "Tempo"},       {2, "Meter"},      {3, "Key"},     {4, "PageNum"}, {5, "BarsBeats"},
      {64, "Vamp"},       {65, "Repeat"},    {66, "Safety"}, {67, "Cut"},    {68, "Caesura"},
      {69, "TempoScale"}, {70, "Transpose"}, {71, "Marker"}, {72, "Click"}};
  for (const auto& [code, name] : names) EXPECT_EQ(codes::editNameByTeskEventCode(code), name);
  EXPECT_EQ(codes::editNameByTeskEventCode(0), "Unknown");
  EXPECT_EQ(codes::editNameByTeskEventCode(-1), "Unknown");
}

}  // namespace
