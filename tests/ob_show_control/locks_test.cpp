#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "exc/lock/scope_lock.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/journaling_locks.h"
#include "tests/fakes/planning_show_control.h"
#include "tests/fakes/scripted_how_to_play.h"
#include "tests/ob_show_control/control_fixture.h"

namespace {

using fakes::TakeJournal;
using test_support::Journal;

class ControlLocks : public test_support::ControlTest {
 protected:
  fakes::planning::Script& script = fakes::planning::GetScript();
};

// Without the innermost lock, which may be taken at any place.
Journal LocksOf(const std::function<void()>& action) {
  TakeJournal();
  {
    fakes::locks::Journaling journaling;
    action();
  }
  Journal journal = TakeJournal();
  std::erase_if(journal,
                [](const std::string& entry) { return entry.find("HowToPlay") != std::string::npos; });
  return journal;
}

TEST_F(ControlLocks, PlanningTakesTheConverterFirstAndGivesBothUpAroundTheBase) {
  fakes::how_to_play::GetScript().writesJournal = false;
  script.writesJournal = false;
  script.onProcessLoopEvents = [] { fakes::Write("loop events"); };
  script.onFindOnAdvance = [] { fakes::Write("control events"); };
  EXPECT_EQ(LocksOf([&] { Plan(1000); }),
            (Journal{"+SamplesTicksConverter", "+ShowControl",                    //
                     "-ShowControl", "-SamplesTicksConverter", "loop events",     //
                     "+SamplesTicksConverter", "+ShowControl",                    //
                     "-ShowControl", "-SamplesTicksConverter", "control events",  //
                     "+ShowControl", "-ShowControl",                              // the base's own
                     "+SamplesTicksConverter", "+ShowControl",                    //
                     "-ShowControl", "-SamplesTicksConverter"}));
}

TEST_F(ControlLocks, APlanInsideATickKeepsBothToTheEnd) {
  EXPECT_EQ(LocksOf([&] { Plan(10); }),
            (Journal{"+SamplesTicksConverter", "+ShowControl", "-ShowControl", "-SamplesTicksConverter"}));
}

TEST_F(ControlLocks, ACaesuraIsConvertedOutsideTheShowControlsLock) {
  control->AddCaesura(50);
  EXPECT_EQ(LocksOf([&] { control->GetNextCaesuraSampleIndex(0); }),
            (Journal{"+SamplesTicksConverter", "-SamplesTicksConverter", "+ShowControl", "-ShowControl",
                     "+SamplesTicksConverter", "-SamplesTicksConverter"}));
}

TEST_F(ControlLocks, FactorsAreConvertedOutsideTheShowControlsLock) {
  long double scale = 0;
  int transposition = 0;
  EXPECT_EQ(LocksOf([&] { control->GetDspFactorsAtCurrentSampleIndex(&scale, &transposition); }),
            (Journal{"+ShowControl", "-ShowControl", "+SamplesTicksConverter", "-SamplesTicksConverter",
                     "+ShowControl", "-ShowControl"}));
  EXPECT_EQ(LocksOf([&] { control->GetDspFactorsAt(240, &scale, &transposition); }),
            (Journal{"+ShowControl", "-ShowControl", "+SamplesTicksConverter", "-SamplesTicksConverter",
                     "+ShowControl", "-ShowControl"}));
  EXPECT_EQ(LocksOf([&] { control->GetDspFactorsAtCurrentTickIndex(&scale, &transposition); }), Journal());
}

TEST_F(ControlLocks, AnAlignmentIsOnePieceUnderTheConvertersLock) {
  long long sample = 25;
  unsigned tick = 0;
  EXPECT_EQ(LocksOf([&] { control->GetAlignedTickAndSampleIndex(&sample, &tick); }),
            (Journal{"+SamplesTicksConverter", "-SamplesTicksConverter"}));
}

TEST_F(ControlLocks, TheSongsRangeAndTheCutToItsEndAreAskedWithoutALock) {
  fakes::planning::GetScript().cuts[0] = 1000;
  EXPECT_EQ(LocksOf([&] {
              control->GetStartTickIndex();
              control->GetEndTickIndex();
              EXPECT_TRUE(control->GetCutToEndOfSongIsNext());
            }),
            Journal());
}

TEST_F(ControlLocks, EveryQueryAndCorrectionTakesTheShowControlsLock) {
  const std::pair<const char*, std::function<void()>> operations[] = {
      {"GetSampleIndex", [&] { control->GetSampleIndex(); }},
      {"GetSampleCount", [&] { control->GetSampleCount(); }},
      {"GetLastJumpSampleIndex", [&] { control->GetLastJumpSampleIndex(); }},
      {"GetJumpTargetSampleIndex", [&] { control->GetJumpTargetSampleIndex(); }},
      {"GetJumpIsNext", [&] { control->GetJumpIsNext(); }},
      {"AdjustNextJumpSampleIndex", [&] { control->AdjustNextJumpSampleIndex(1); }},
      {"SkipAheadSamplesOnNextJump", [&] { control->SkipAheadSamplesOnNextJump(1); }},
      {"AddToSampleIndex", [&] { control->AddToSampleIndex(0); }},
  };
  for (const auto& [name, operation] : operations) {
    EXPECT_EQ(LocksOf(operation), (Journal{"+ShowControl", "-ShowControl"})) << name;
  }
}

TEST_F(ControlLocks, ReadSamplesAreAddedAndTheTickMovedUnderOneLock) {
  Place(0);
  script.writesJournal = true;
  EXPECT_EQ(LocksOf([&] { control->AddToSampleIndex(100); }),
            (Journal{"+ShowControl", "+SamplesTicksConverter", "-SamplesTicksConverter", "base.DoSkipAhead 4",
                     "stream.AdvanceToTickIndex 4", "-ShowControl"}));
}

TEST_F(ControlLocks, ADueJumpIsConvertedUnderTheShowControlsLock) {
  control->AddLoop({.targetTick = 5, .tick = 0, .kind = 64});
  EXPECT_EQ(LocksOf([&] { control->GetJumpIsNext(); }),
            (Journal{"+ShowControl", "+SamplesTicksConverter", "-SamplesTicksConverter", "-ShowControl"}));
}

TEST_F(ControlLocks, TheCountRestartsAfterTheBasesResetAndTheVariablesBeforeIt) {
  EXPECT_EQ(LocksOf([&] { control->ResetGuiUpdate(); }),
            (Journal{"base.ResetGuiUpdate", "+ShowControl", "-ShowControl"}));
  EXPECT_EQ(LocksOf([&] { control->ResetControlVariables(); }),
            (Journal{"+ShowControl", "-ShowControl", "base.ResetControlVariables"}));
}

// RENDER plans and reads, HOST jumps and asks: both hold the read-samples lock for their step, as the output
// and the transport do.
TEST_F(ControlLocks, ReadsAndJumpsOfTwoThreadsKeepBothPositionsInStep) {
  script.writesJournal = false;
  fakes::how_to_play::GetScript().writesJournal = false;
  std::atomic<bool> stop{false};
  std::thread host([&] {
    for (unsigned i = 0; i < 300; ++i) {
      exc::ScopeLock readSamples(control->GetReadSamplesLock());
      exc::ScopeLock lock(*control);
      control->SetJump(i % 900, lock, false);
    }
    stop = true;
  });
  std::thread shown([&] {
    while (!stop) {
      EXPECT_LE(control->GetSampleIndex(), 24'000);
      EXPECT_LE(control->GetTickIndex(), 1000u);
      EXPECT_EQ(control->GetEndTickIndex(), 1000u);
    }
  });
  do {
    exc::ScopeLock readSamples(control->GetReadSamplesLock());
    const long long count = Plan(100);
    control->AddToSampleIndex(count);
    EXPECT_EQ(converter.SamplesToTicksInteger(control->GetSampleIndex()), control->GetTickIndex());
  } while (!stop);
  host.join();
  shown.join();
}

}  // namespace
