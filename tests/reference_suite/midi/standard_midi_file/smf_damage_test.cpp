// Files cut off, bent and lying: an answer every time, and soon.

#include <gtest/gtest.h>
#include <time.h>

#include <random>

#include "reference_suite/midi/standard_midi_file/smf_writer.h"
#include "tests/reference_suite/midi/standard_midi_file/midi_bytes.h"

namespace {

using namespace midi_bytes;

// Time on the processor, so that a busy machine does not count.
double ProcessorMilliseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

double MillisecondsToAnswer(const Bytes& file) {
  const double start = ProcessorMilliseconds();
  Refusal(file);
  return ProcessorMilliseconds() - start;
}

// One of everything: two parts, tempos, meters, keys, markers, SysEx, a long quantity.
Bytes SampleFile() {
  tesk_midi::SmfWriter writer(480, "Sample");
  for (unsigned bar = 0; bar < 6; ++bar) {
    writer.Tempo(bar * 1920, 500'000 - bar * 1000);
    writer.Meter(bar * 1920, 4, 4);
    writer.Key(bar * 1920, static_cast<int>(bar) - 3, bar % 2 == 0);
    writer.Marker(bar * 1920, "Bar " + std::to_string(bar));
  }
  const std::size_t part = writer.AddPart("Part");
  writer.Program(part, 0, 3, 12);
  for (unsigned beat = 0; beat < 24; ++beat) writer.Note(part, beat * 480, 470, 3, 60 + beat % 12, 90);
  writer.End(6 * 1920);
  return Joined({writer.Bytes(), Track({Event(0, {0xF0, 3, 1, 2, 0xF7}), Event(3, {0xB0, 7, 100})})});
}

TEST(SmfDamage, TheSampleItselfLacksOnlyInItsHeader) {
  const auto file = Parsed(SampleFile());
  EXPECT_EQ(file.endTick, 6u * 1920u);
  EXPECT_EQ(file.warnings.size(), 1u) << "one track more than the header promises";
}

TEST(SmfDamage, CutOffAtEveryByteGivesAnErrorOrAWarning) {
  tesk_midi::SmfWriter writer(480, "Sample");
  writer.Tempo(0, 500'000);
  writer.Marker(200, "Half way");
  const std::size_t part = writer.AddPart("Part");
  for (unsigned beat = 0; beat < 8; ++beat) writer.Note(part, beat * 480, 470, 3, 60 + beat, 90);
  writer.End(4000);
  const Bytes whole = writer.Bytes();
  ASSERT_TRUE(Parsed(whole).warnings.empty());
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    if (Refusal(cut) == "accepted") {
      EXPECT_FALSE(Parsed(cut).warnings.empty()) << "cut to " << length << " bytes";
    }
  }
}

TEST(SmfDamage, CutOffInsideATrackIsAlwaysAnError) {
  const Bytes whole = File({Track({Tempo(0, 500'000), Event(9, {0x90, 60, 1})})});
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_NE(Refusal(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length))), "accepted");
  }
}

// Whatever is accepted must keep its own promises; whatever is refused must say where.
void CheckAnswer(const Bytes& file) {
  try {
    const auto song = Parsed(file);
    EXPECT_GE(song.division, 1u);
    EXPECT_LE(song.division, 32'767u);
    std::uint32_t last = 0;
    for (const auto& tempo : song.tempos) {
      EXPECT_GE(tempo.tick, last);
      EXPECT_LE(tempo.tick, song.endTick);
      EXPECT_NE(tempo.microsecondsPerQuarter, 0u);
      last = tempo.tick;
    }
    for (const auto& meter : song.meters) EXPECT_NE(meter.numerator, 0u);
  } catch (const tesk_midi::SmfError& error) {
    EXPECT_EQ(std::string(error.what()).rfind("song.mid: byte ", 0), 0u) << error.what();
  }
}

TEST(SmfDamage, ThirtyThousandBentFilesAreAnswered) {
  const Bytes whole = SampleFile();
  std::mt19937 random(20'240'517);
  const std::uint8_t favourites[] = {0x00, 0x01, 0x2F, 0x51, 0x7F, 0x80, 0xF0, 0xF7, 0xFF};
  for (int round = 0; round < 30'000; ++round) {
    Bytes bent = whole;
    for (auto changes = 1 + random() % 6; changes > 0; --changes) {
      const std::size_t place = random() % bent.size();
      bent[place] = random() % 2 == 0 ? favourites[random() % std::size(favourites)]
                                      : static_cast<std::uint8_t>(random() & 0xFF);
    }
    if (random() % 4 == 0) bent.resize(random() % bent.size());
    CheckAnswer(bent);
  }
}

TEST(SmfDamage, NoiseBehindAValidHeaderIsAnswered) {
  std::mt19937 random(7);
  for (int round = 0; round < 20'000; ++round) {
    Bytes noise(random() % 120);
    for (auto& byte : noise) byte = static_cast<std::uint8_t>(random() & 0xFF);
    CheckAnswer(File({Chunk("MTrk", noise)}));
  }
}

TEST(SmfDamage, AbsurdLengthsAndCountsAreAnsweredWithinATenthOfASecond) {
  const Bytes hugeQuantity{0, 0xFF, 0x01, 0xFF, 0xFF, 0xFF, 0x7F};
  EXPECT_LT(MillisecondsToAnswer(File({Track({hugeQuantity})})), 100.0);
  EXPECT_LT(MillisecondsToAnswer(Joined({Header(1, 65'535, 480), Track({Tempo(0, 500'000)})})), 100.0);
  EXPECT_LT(MillisecondsToAnswer(Joined({Header(1, 65'535, 480), Repeated(Track({}), 65'535)})), 100.0);
  EXPECT_LT(
      MillisecondsToAnswer(Joined({Header(1, 1, 480), Bytes{'M', 'T', 'r', 'k'}, Number(0xFFFFFFF0, 4)})),
      100.0);
  EXPECT_LT(MillisecondsToAnswer(Joined({Bytes{'M', 'T', 'h', 'd'}, Number(0xFFFFFFFF, 4)})), 100.0);
  EXPECT_LT(MillisecondsToAnswer(Joined({Header(1, 1, 480), Repeated(Chunk("junk", {}), 50'000)})), 100.0);
}

TEST(SmfDamage, TenThousandTemposAreReadWithinATwentiethOfASecond) {
  const Bytes track = Chunk("MTrk", Joined({Repeated(Tempo(1, 400'000), 10'000), {0, 0xFF, 0x2F, 0}}));
  EXPECT_LT(MillisecondsToAnswer(File({track})), 50.0);
}

}  // namespace
