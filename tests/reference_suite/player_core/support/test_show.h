#pragma once

#include <string>
#include <utility>
#include <vector>

#include "suite/midi/change_log.h"
#include "suite/midi/show_data.h"

namespace test_support {

// 480 ticks a quarter note, 4/4 throughout unless a song is told otherwise: a beat has 480 ticks, a bar
// 1,920.
constexpr unsigned kBeat = 480;
constexpr unsigned kBar = 4 * kBeat;

// One song as music: its cues are added one by one, and it stands in the show when the show is built.
class TestSong {
 public:
  explicit TestSong(std::string number) : number_(std::move(number)) {}

  TestSong& Bars(unsigned count);
  TestSong& AudioFrom(unsigned tick);
  TestSong& AudioTo(unsigned tick);
  TestSong& Tempo(unsigned tick, unsigned microsecondsPerQuarter);
  TestSong& Meter(unsigned tick, unsigned numerator, unsigned denominator);
  TestSong& Key(unsigned tick, int sharps, bool minor);
  TestSong& Page(unsigned tick, unsigned number);
  TestSong& WithoutBars();

  TestSong& Vamp(unsigned from, unsigned to, CL::VampExit exit = CL::VampExit::EndOfPass);
  TestSong& Repeat(unsigned from, unsigned to, int passes);
  TestSong& Safety(unsigned from, unsigned to);
  TestSong& Cut(unsigned from, unsigned to);
  TestSong& Caesura(unsigned tick);
  TestSong& Marker(unsigned tick);
  TestSong& TempoScale(unsigned tick, double scale);
  TestSong& Transpose(unsigned tick, int semitones);
  TestSong& Attacca();
  TestSong& Skip();

  const std::string& GetNumber() const { return number_; }
  tesk_midi::SongData MakeData() const;
  CL::SongLog GetLog() const { return log_; }

 private:
  std::string number_;
  unsigned bars_ = 100;
  unsigned audioStart_ = 0;
  unsigned audioEnd_ = 0;
  bool hasBars_ = true;
  std::vector<TL::Tempo> tempos_;
  std::vector<TL::Meter> meters_;
  std::vector<TL::Key> keys_;
  std::vector<TL::PageNum> pages_;
  CL::SongLog log_;
};

// Show data and change log of a few songs, in the order in which they are given.
struct TestShow {
  explicit TestShow(const std::vector<TestSong>& songs);

  tesk_midi::ShowData data;
  CL::ChangeLog log;
};

}  // namespace test_support
