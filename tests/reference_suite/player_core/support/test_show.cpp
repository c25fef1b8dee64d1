#include "tests/reference_suite/player_core/support/test_show.h"

#include <algorithm>

namespace test_support {

namespace {

constexpr int kNoLine = 0;

}  // namespace

TestSong& TestSong::Bars(unsigned count) {
  bars_ = count;
  return *this;
}
TestSong& TestSong::AudioFrom(unsigned tick) {
  audioStart_ = tick;
  return *this;
}
TestSong& TestSong::AudioTo(unsigned tick) {
  audioEnd_ = tick;
  return *this;
}
TestSong& TestSong::Tempo(unsigned tick, unsigned microsecondsPerQuarter) {
  tempos_.emplace_back(tick, microsecondsPerQuarter);
  return *this;
}
TestSong& TestSong::Meter(unsigned tick, unsigned numerator, unsigned denominator) {
  meters_.emplace_back(tick, numerator, denominator);
  return *this;
}
TestSong& TestSong::Key(unsigned tick, int sharps, bool minor) {
  keys_.emplace_back(tick, sharps, minor);
  return *this;
}
TestSong& TestSong::Page(unsigned tick, unsigned number) {
  pages_.emplace_back(tick, number);
  return *this;
}
TestSong& TestSong::WithoutBars() {
  hasBars_ = false;
  return *this;
}

TestSong& TestSong::Vamp(unsigned from, unsigned to, CL::VampExit exit) {
  log_.loops.Add(CL::Loop(from, to, codes::kVamp, 0, exit, kNoLine));
  return *this;
}
TestSong& TestSong::Repeat(unsigned from, unsigned to, int passes) {
  log_.loops.Add(CL::Loop(from, to, codes::kRepeat, passes, CL::VampExit::EndOfPass, kNoLine));
  return *this;
}
TestSong& TestSong::Safety(unsigned from, unsigned to) {
  log_.loops.Add(CL::Loop(from, to, codes::kSafety, 1, CL::VampExit::EndOfPass, kNoLine));
  return *this;
}
TestSong& TestSong::Cut(unsigned from, unsigned to) {
  log_.cuts.Add(CL::Cut(from, to, kNoLine));
  return *this;
}
TestSong& TestSong::Caesura(unsigned tick) {
  log_.caesuras.Add(CL::Caesura(tick, kNoLine));
  return *this;
}
TestSong& TestSong::Marker(unsigned tick) {
  log_.markers.Add(CL::Marker(tick, "marker", kNoLine));
  return *this;
}
TestSong& TestSong::TempoScale(unsigned tick, double scale) {
  log_.tempoScales.Add(CL::TempoScale(tick, scale, kNoLine));
  return *this;
}
TestSong& TestSong::Transpose(unsigned tick, int semitones) {
  log_.transposes.Add(CL::Transpose(tick, semitones, kNoLine));
  return *this;
}
TestSong& TestSong::Attacca() {
  log_.attacca = 1;
  return *this;
}
TestSong& TestSong::Skip() {
  log_.skip = true;
  return *this;
}

tesk_midi::SongData TestSong::MakeData() const {
  TL::Timeline timeline;
  std::vector<TL::Tempo> tempos = tempos_;
  if (tempos.empty()) tempos.emplace_back(0, 500000);
  timeline.SetTempos(cmn::SequenceTemplate<TL::Tempo>(tempos));
  timeline.SetMeters(cmn::SequenceTemplate<TL::Meter>(meters_));
  timeline.SetKeys(cmn::SequenceTemplate<TL::Key>(keys_));
  timeline.SetPageNums(cmn::SequenceTemplate<TL::PageNum>(pages_));
  cmn::SequenceTemplate<TL::BarsBeats> bars;
  unsigned tick = 0;
  for (unsigned i = 0; i < bars_ && hasBars_; ++i) {
    unsigned beats = 4;
    unsigned ticksPerBeat = kBeat;
    for (const TL::Meter& meter : meters_) {
      if (meter.abs_time() > tick) continue;
      beats = meter.GetNumerator();
      ticksPerBeat = 4 * kBeat / meter.GetDenominator();
    }
    bars.Add(TL::BarsBeats(tick, static_cast<int>(i) + 1, beats, ticksPerBeat));
    tick += beats * ticksPerBeat;
  }
  timeline.SetBarsBeats(std::move(bars));
  timeline.SetMidiEndTicks(hasBars_ ? tick : bars_ * kBar);
  timeline.SetAudioStartTicks(audioStart_);
  timeline.SetAudioEndTicks(audioEnd_);
  return tesk_midi::SongData(number_, "Song " + number_, static_cast<unsigned short>(kBeat), timeline);
}

TestShow::TestShow(const std::vector<TestSong>& songs) {
  std::vector<std::string> order;
  for (const TestSong& song : songs) {
    data.AddSong(song.MakeData());
    log.SetSongLog(song.GetNumber(), song.GetLog());
    order.push_back(song.GetNumber());
  }
  data.SetRunningOrder(order);
}

}  // namespace test_support
