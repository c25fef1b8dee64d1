#include "tests/ob_show_control/control_fixture.h"

#include <cstddef>
#include <sstream>
#include <thread>

#include "exc/console/cout_buffer.h"
#include "exc/lock/scope_lock.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/planning_show_control.h"
#include "tests/fakes/scripted_how_to_play.h"
#include "tests/support/cout_capture.h"

namespace test_support {

namespace {

// Handed on and never looked behind: the generator of these tests asks no player.
Player& NoPlayer() {
  alignas(std::max_align_t) static std::byte place[1];
  return reinterpret_cast<Player&>(place);
}

}  // namespace

unsigned OpenShowControl::GetEndTickIndex() {
  ++endQueries;
  tickAtEndQuery = GetTickIndex();
  return endTick.value_or(OBShowControl::GetEndTickIndex());
}

void OpenShowControl::OnCaesuraStop() {
  ++caesuraStops;
  OBShowControl::OnCaesuraStop();
}

void OpenShowControl::ResetControlVariables() {
  ++variableResets;
  OBShowControl::ResetControlVariables();
}

void OpenShowControl::SetJump(unsigned tickIndex, exc::ExLock& lock, bool skipAhead) {
  ++jumps;
  OBShowControl::SetJump(tickIndex, lock, skipAhead);
}

void OpenShowControl::PlaceTick(unsigned tick) {
  SetTickIndex(tick);
  fakes::how_to_play::GetScript().tick = tick;
}

void OpenShowControl::AddLoop(const LoopEvent& loop) {
  exc::ScopeLock lock(*this);
  loopEvents_.GetEvents().push_back(loop);
}

void OpenShowControl::AddCaesura(unsigned tick) {
  exc::ScopeLock lock(*this);
  pendingCaesuras_.emplace_back(tick);
}

void OpenShowControl::RemoveCaesuras() {
  exc::ScopeLock lock(*this);
  pendingCaesuras_.clear();
}

std::pair<double, int> OpenShowControl::GetStoredDspFactors() {
  exc::ScopeLock lock(*this);
  return {dspTempoScale_, dspTransposition_};
}

ControlTest::ControlTest() : guiUpdate(NoPlayer(), nullptr) {
  caesuraSeek = [this] {
    ++caesuraSeeks;
    return false;
  };
  control = std::make_unique<OpenShowControl>(activeSongNumber, showData, nullptr, converter, guiUpdate,
                                              transients, [this] { return caesuraSeek(); });
  converter.SetSampleRate(48000.0L);
  Load({.midiEnd = 1000});
}

void ControlTest::Load(const SongTicks& ticks, const std::vector<TempoAt>& tempos) {
  song.emplace(SongWithTempos(tempos, kPpq, ticks));
  fakes::planning::GetScript().song = &*song;
  control->LoadSong();
  fakes::TakeJournal();
}

void ControlTest::Place(unsigned tick, long long extra) {
  {
    exc::ScopeLock lock(*control);
    control->SetJump(tick, lock, false);
  }
  control->AddToSampleIndex(extra);
  control->ResetGuiUpdate();
  control->endQueries = 0;
  fakes::TakeJournal();
}

long long ControlTest::Plan(long long request, long double scale) {
  return control->GetNextReadSampleCount(tesk_audio::SampleCount(request, scale)).GetUnscaled();
}

tesk_audio::SampleCount ControlTest::PlanScaled(long long scaled, long double scale) {
  tesk_audio::SampleCount request(0, scale);
  request.SetScaled(scaled);
  return control->GetNextReadSampleCount(request);
}

long long ControlTest::Read(long long request) {
  const long long count = Plan(request);
  control->AddToSampleIndex(count);
  return count;
}

std::vector<std::string> ControlTest::Registrations() {
  CoutCapture console;
  {
    exc::CoutBuffer out;
    converter.PrintLast20(out);
  }
  std::istringstream lines(console.Text());
  std::vector<std::string> registrations;
  std::string line;
  std::getline(lines, line);  // the heading
  while (std::getline(lines, line)) registrations.push_back(line.substr(4));
  return registrations;
}

bool ControlTest::LocksAreFree() {
  bool bothFree = false;
  std::thread other([&] {
    if (!converter.TryLock()) return;
    if (control->TryLock()) {
      bothFree = true;
      control->Unlock();
    }
    converter.Unlock();
  });
  other.join();
  return bothFree;
}

std::string Failed(const std::string& condition, int line) {
  return "Assertion failed: " + condition +
         ", function GetNextReadSampleCount, file Sources/ob_show_control, line " + std::to_string(line) +
         ".";
}

}  // namespace test_support
