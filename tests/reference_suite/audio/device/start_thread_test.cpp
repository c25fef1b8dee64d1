// What the system grants to threads of devices, and what is done where it grants less.
#include "reference_suite/audio/device/start_thread.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <iostream>

#include "suite/audio/errors.h"
#include "tests/support/cout_capture.h"
#include "tests/support/no_threads.h"
#include "tests/support/throws_with_text.h"

namespace {

constexpr int kAll = 1'000;

std::atomic<int> highestThere{0};     // 0: as the system says
std::atomic<int> mostTaken{kAll};     // priorities above are refused
std::atomic<rlim_t> limitTold{kAll};  // kAll: as the system says

template <typename Function>
Function* TheSystems(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int sched_get_priority_max(int policy) noexcept {
  return highestThere != 0 ? highestThere.load() : TheSystems<int(int)>("sched_get_priority_max")(policy);
}

int pthread_attr_setschedparam(pthread_attr_t* attributes, const sched_param* parameters) noexcept {
  if (parameters->sched_priority > mostTaken) return EINVAL;
  return TheSystems<int(pthread_attr_t*, const sched_param*)>("pthread_attr_setschedparam")(attributes,
                                                                                            parameters);
}

int getrlimit(__rlimit_resource_t resource, rlimit* limit) noexcept {
  const int result = TheSystems<int(__rlimit_resource_t, rlimit*)>("getrlimit")(resource, limit);
  if (resource == RLIMIT_RTPRIO && limitTold != kAll) limit->rlim_cur = limitTold;
  return result;
}

}  // extern "C"

namespace {

struct Scheduling {
  int policy = -1;
  int priority = -1;
};

// Asks the kernel: the thread library goes by what it believes to have been inherited.
void* LookAtMyself(void* found) {
  sched_param parameters{};
  auto& scheduling = *static_cast<Scheduling*>(found);
  scheduling.policy = ::sched_getscheduler(0);
  ::sched_getparam(0, &parameters);
  scheduling.priority = parameters.sched_priority;
  return nullptr;
}

Scheduling OfARealTimeThread() {
  Scheduling found;
  ::pthread_join(tesk_audio::StartRealTimeThread(&LookAtMyself, &found, "The test"), nullptr);
  return found;
}

bool MaySchedule(int priority) {
  sched_param parameters{};
  parameters.sched_priority = priority;
  const bool may = ::sched_setscheduler(0, SCHED_FIFO, &parameters) == 0;
  parameters.sched_priority = 0;
  ::sched_setscheduler(0, SCHED_OTHER, &parameters);
  return may;
}

// The most up to there that the system grants this process, which on a stage machine is all of it: an
// ordinary thread where that is nothing.
void ExpectTheMostUpTo(int most, const Scheduling& found) {
  while (most > 0 && !MaySchedule(most)) --most;
  EXPECT_EQ(found.policy, most > 0 ? SCHED_FIFO : SCHED_OTHER);
  EXPECT_EQ(found.priority, most);
}

constexpr char kNotice[] =
    "NOTICE: the system grants the audio output no real-time priority; sound may drop out when other "
    "programs are "
    "busy. For a stage machine put \"@audio - rtprio 95\" into /etc/security/limits.d/audio.conf, add "
    "yourself to "
    "the group audio, and log in again.\n";

TEST(StartThread, ARealTimeThreadHasThePrioritySixty) {
  ExpectTheMostUpTo(60, OfARealTimeThread());
}

struct GivingWay {
  std::vector<int> to;  // one after the other
  std::vector<Scheduling> found;
};

void* GiveWayAndLook(void* argument) {
  auto& way = *static_cast<GivingWay*>(argument);
  tesk_audio::KeepRealTimeToOneself();
  for (const int priority : way.to) {
    tesk_audio::GiveWayTo(priority);
    LookAtMyself(&way.found.emplace_back());
  }
  return nullptr;
}

TEST(StartThread, ARealTimeThreadStandsJustBelowWhatItGivesWayTo) {
  GivingWay way{{5, 90, 1, 0}, {}};
  ::pthread_join(tesk_audio::StartRealTimeThread(&GiveWayAndLook, &way, "The test"), nullptr);
  ASSERT_EQ(way.found.size(), 4U);
  if (MaySchedule(90)) {
    const int expected[] = {4, 89, 1, 60};
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_EQ(way.found[i].policy, SCHED_FIFO | SCHED_RESET_ON_FORK) << "what it starts stays ordinary";
      EXPECT_EQ(way.found[i].priority, expected[i]);
    }
  } else {
    for (const Scheduling& each : way.found) EXPECT_LE(each.priority, 89);
  }
}

TEST(StartThread, AnOrdinaryThreadGivesWayToEverythingAlready) {
  GivingWay way{{5}, {}};
  ::pthread_join(tesk_audio::StartThread(&GiveWayAndLook, &way, "The test"), nullptr);
  EXPECT_EQ(way.found.at(0).policy, SCHED_OTHER);
}

// Keeps real time to itself, starts a thread as the player does, and lets that one look.
void* StartAnother(void* found) {
  tesk_audio::KeepRealTimeToOneself();
  pthread_t other{};
  if (::pthread_create(&other, nullptr, &LookAtMyself, found) == 0) ::pthread_join(other, nullptr);
  return nullptr;
}

TEST(StartThread, WhatARealTimeThreadStartsItselfIsOrdinary) {
  Scheduling found;
  ::pthread_join(tesk_audio::StartRealTimeThread(&StartAnother, &found, "The test"), nullptr);
  EXPECT_EQ(found.policy, SCHED_OTHER);
  EXPECT_EQ(found.priority, 0);
}

TEST(StartThread, WhereSixtyIsMoreThanTheSystemKnowsItHasTheHighestThatThereIs) {
  highestThere = 40;
  const Scheduling found = OfARealTimeThread();
  highestThere = 0;
  ExpectTheMostUpTo(40, found);
}

TEST(StartThread, WithinALimitItHasWhatTheLimitGrants) {
  limitTold = 20;
  mostTaken = 20;
  const Scheduling found = OfARealTimeThread();
  mostTaken = kAll;
  limitTold = kAll;
  ExpectTheMostUpTo(20, found);
}

// In a process of its own: it is said once in the life of one, and others may have been refused before.
TEST(StartThread, WhateverTheRefusalItIsAnOrdinaryThreadAndThatIsSaidOnceWithARemedy) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  const auto refuseTwice = [] {
    const test_support::CoutCapture console;
    mostTaken = 0;
    const bool areOrdinary =
        OfARealTimeThread().policy == SCHED_OTHER && OfARealTimeThread().policy == SCHED_OTHER;
    std::cerr << console.Text() << "end";
    std::_Exit(areOrdinary ? 0 : 1);
  };
  EXPECT_EXIT(refuseTwice(), testing::ExitedWithCode(0), testing::Eq(std::string(kNotice) + "end"));
}

TEST(StartThread, WithoutAnyThreadToBeHadTheTextNamesWhoWantedIt) {
  const test_support::NoThreads none;
  Scheduling found;
  for (const auto start : {&tesk_audio::StartThread, &tesk_audio::StartRealTimeThread}) {
    EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::TESKAudioError>(
        [&] { start(&LookAtMyself, &found, "The test"); },
        "The test cannot start its thread: Resource temporarily unavailable. Close other programs."));
  }
}

}  // namespace
