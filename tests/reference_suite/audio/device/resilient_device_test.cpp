// Devices that die, hang and go wild, and the clock that stands in for them.
#include "reference_suite/audio/device/resilient_device.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

#include "reference_suite/audio/output/live_sample_output.h"
#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/scripted_player.h"
#include "tests/reference_suite/audio/support/test_device.h"
#include "tests/support/no_threads.h"
#include "tests/support/throws_with_text.h"

namespace {

using notify::DeviceUpdate;
using tesk_audio::Device;
using tesk_audio::NullDevice;
using tesk_audio::ResilientDevice;
using testing::HasSubstr;

constexpr double kRate = 48'000.0;
constexpr char kKilled[] = "mortal device: it was killed.";

// Counts the frames that are taken, and is always ready.
class Counter : public tesk_audio::DeviceCallback {
 public:
  void Process(float* out, std::size_t frames) noexcept override {
    for (std::size_t i = 0; i < frames; ++i) out[i] = 1.0F;
    count += static_cast<long long>(frames);
  }
  std::atomic<long long> count{0};
};

// Keeps time until it dies: told, or without a word.
class MortalDevice : public NullDevice {
 public:
  explicit MortalDevice(double rateHz = kRate) : NullDevice(rateHz, 1, 256) {}
  bool HasFailed() const override { return failed; }
  std::string GetFailure() const override { return "it was killed"; }
  std::string GetDescription() const override { return "mortal device"; }
  std::string WhyUnheard() const override {
    const std::lock_guard lock(mutex_);
    return unheard_;
  }
  std::string WhatIsMissing() const override {
    const std::lock_guard lock(mutex_);
    return missing_;
  }
  int GetRealTimePriority() const override { return 7; }
  long long GetXrunCount() const override { return xruns; }
  long long GetSilentFrames() const override { return silentFrames; }
  bool IsConnecting() const override {
    ++timesAsked;
    return connecting;
  }
  void SetMissing(const std::string& what) {
    const std::lock_guard lock(mutex_);
    missing_ = what;
  }
  void SetUnheard(const std::string& why) {
    const std::lock_guard lock(mutex_);
    unheard_ = why;
  }
  std::atomic<bool> failed{false};
  std::atomic<bool> connecting{false};
  mutable std::atomic<int> timesAsked{0};  // whether it is connecting
  std::atomic<long long> xruns{0};
  std::atomic<long long> silentFrames{0};

 private:
  mutable std::mutex mutex_;
  std::string unheard_;
  std::string missing_;
};

// Hands out what the test has put in; then there is no device.
class Shop {
 public:
  MortalDevice* Put(double rateHz = kRate) {
    auto device = std::make_unique<MortalDevice>(rateHz);
    MortalDevice* const seen = device.get();
    PutDevice(std::move(device));
    return seen;
  }
  TestDevice* PutTestDevice() {
    auto device = std::make_unique<TestDevice>(kRate, 1, 256);
    TestDevice* const seen = device.get();
    PutDevice(std::move(device));
    return seen;
  }
  void PutDevice(std::unique_ptr<Device> device) {
    const std::lock_guard lock(shelf_->mutex);
    shelf_->devices.push_back(std::move(device));
  }
  void SayWhyEmpty(const std::string& why) {
    const std::lock_guard lock(shelf_->mutex);
    shelf_->whyEmpty = why;
  }
  // May still be asked when the shop is gone: a search that nobody wants any more ends by itself.
  tesk_audio::DeviceSource Source() {
    return [shelf = shelf_]() -> std::unique_ptr<Device> {
      const std::lock_guard lock(shelf->mutex);
      if (shelf->devices.empty()) throw tesk_audio::TESKAudioError(shelf->whyEmpty);
      std::unique_ptr<Device> device = std::move(shelf->devices.front());
      shelf->devices.pop_front();
      return device;
    };
  }

 private:
  struct Shelf {
    std::mutex mutex;
    std::deque<std::unique_ptr<Device>> devices;
    std::string whyEmpty = "The shop is empty.";
  };
  const std::shared_ptr<Shelf> shelf_ = std::make_shared<Shelf>();
};

class Told {
 public:
  ResilientDevice::Tell Tell() {
    return [this](const DeviceUpdate& update) {
      const std::lock_guard lock(mutex_);
      if (update.recovering && !updates_.empty() && updates_.back().recovering) {
        stillAway_.push_back(update.reason);
      } else {
        updates_.push_back(update);
      }
    };
  }
  // Why the device that is lost already stays away.
  std::vector<std::string> GetStillAway() const {
    const std::lock_guard lock(mutex_);
    return stillAway_;
  }
  // All but those.
  std::vector<DeviceUpdate> Get() const {
    const std::lock_guard lock(mutex_);
    return updates_;
  }
  bool Is(std::size_t count) const {
    return Await([&] { return Get().size() >= count; });
  }

 private:
  mutable std::mutex mutex_;
  std::vector<DeviceUpdate> updates_;
  std::vector<std::string> stillAway_;
};

class Clock {
 public:
  double Seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

const ResilientDevice::Shape kMono{kRate, 1, 256};

double PlaceIn(const Counter& counter) {
  return static_cast<double>(counter.count) / kRate;
}

// When a show began, or was at least at a place: between the two, the test itself being held up now and then.
struct Began {
  double notBefore = 0.0;
  double notAfter = 0.0;
  double place = 0.0;
};

template <typename Begin>
Began Noting(const Counter& counter, const Clock& clock, const Begin& begin) {
  Began began;
  began.notBefore = clock.Seconds();
  began.place = PlaceIn(counter);
  begin();
  began.notAfter = clock.Seconds();
  return began;
}

// Whether the show has come to where the wall clock is, from `began` on. What a device loses because the
// machine stands still is lost: only what lies behind its own loss is made up for.
bool IsNotBehind(const Counter& counter, const Clock& clock, const Began& began) {
  return Await([&] { return PlaceIn(counter) > began.place + clock.Seconds() - began.notAfter - 0.2; });
}

// Whether it is, since the start, not further than a tenth of a second beyond.
bool IsNotAhead(const Counter& counter, const Clock& clock, const Began& start) {
  const double place = PlaceIn(counter);
  return place < clock.Seconds() - start.notBefore + 0.15;
}

bool KeepsTime(const Counter& counter, const Clock& clock, const Began& start) {
  return IsNotBehind(counter, clock, start) && IsNotAhead(counter, clock, start);
}

TEST(ResilientDevice, WhenTheDeviceSaysThatItHasFailedAClockGoesOnInItsPlace) {
  Shop shop;
  Told told;
  Counter counter;
  MortalDevice* const device = shop.Put();
  ResilientDevice resilient(kMono, shop.Source(), told.Tell());
  const Clock clock;
  const Began start = Noting(counter, clock, [&] { resilient.Start(counter); });
  ASSERT_TRUE(Await([&] { return counter.count > 4'000; }));
  EXPECT_FALSE(resilient.IsRecovering());
  EXPECT_EQ(resilient.GetDescription(), "mortal device");
  const Began loss = Noting(counter, clock, [&] {
    device->failed = true;
    EXPECT_TRUE(told.Is(1));
  });
  EXPECT_TRUE(resilient.IsRecovering());
  EXPECT_TRUE(told.Get()[0].recovering);
  EXPECT_EQ(told.Get()[0].reason, kKilled);
  const long long lost = counter.count;
  ASSERT_TRUE(Await([&] { return counter.count > lost + 9'600; })) << "the show goes on";
  shop.Put();
  ASSERT_TRUE(told.Is(2)) << "looked for again and again";
  EXPECT_FALSE(told.Get()[1].recovering);
  EXPECT_FALSE(resilient.IsRecovering());
  EXPECT_TRUE(IsNotBehind(counter, clock, loss));
  EXPECT_TRUE(IsNotAhead(counter, clock, start));
  resilient.Stop();
  const long long stopped = counter.count;
  EXPECT_EQ(counter.count, stopped);
}

TEST(ResilientDevice, ADeviceThatStopsWithoutAWordIsNoticedAndWhatWasLostIsMadeUpFor) {
  Shop shop;
  Told told;
  Counter counter;
  TestDevice* const device = shop.PutTestDevice();
  ResilientDevice resilient(kMono, shop.Source(), told.Tell());
  const Clock clock;
  resilient.Start(counter);
  const Began start = Noting(counter, clock, [&] { device->Turn(256); });
  ASSERT_TRUE(told.Is(1));
  EXPECT_GE(clock.Seconds(), 0.4);
  EXPECT_EQ(told.Get()[0].reason, "test device: it has stopped to ask for sound.");
  EXPECT_TRUE(KeepsTime(counter, clock, start)) << "the silent half second is taken at once";
}

// Of what the first one hears nothing fades in: the output itself begins softly, where that is wanted.
TEST(ResilientDevice, ADeviceThatIsThereAgainFadesInOverTwentyMilliseconds) {
  Shop shop;
  Told told;
  Counter counter;
  TestDevice* const first = shop.PutTestDevice();
  ResilientDevice resilient(kMono, shop.Source(), told.Tell());
  resilient.Start(counter);
  EXPECT_EQ(first->Turn(1'024), std::vector<float>(1'024, 1.0F));
  ASSERT_TRUE(told.Is(1)) << "it asks for nothing any more";
  TestDevice* const found = shop.PutTestDevice();
  ASSERT_TRUE(Await([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    found->Turn(256);
    return found->HeardCount() > 2'000;
  }));
  const std::vector<float> heard = found->Heard();
  for (std::size_t i = 0; i < 959; ++i) ASSERT_NEAR(heard[i], static_cast<float>(i + 1) / 960.0F, 1e-5F) << i;
  EXPECT_EQ(std::vector<float>(heard.begin() + 959, heard.end()),
            std::vector<float>(heard.size() - 959, 1.0F));
}

// Its thread is the last that the system grants.
class LastThread : public MortalDevice, private tesk_audio::DeviceCallback {
 public:
  explicit LastThread(std::unique_ptr<test_support::NoThreads>& none) : none_(none) {}
  void Start(tesk_audio::DeviceCallback& callback) override {
    asked_ = &callback;
    MortalDevice::Start(*this);
    none_ = std::make_unique<test_support::NoThreads>();
  }
  std::atomic<int> calls{0};

 private:
  void Process(float* out, std::size_t frames) noexcept override {
    asked_->Process(out, frames);
    ++calls;
  }
  tesk_audio::DeviceCallback* asked_ = nullptr;
  std::unique_ptr<test_support::NoThreads>& none_;
};

TEST(ResilientDevice, WhenTheWatchIsRefusedItsThreadTheDeviceAsksNobodyAnyMore) {
  Shop shop;
  Counter counter;
  std::unique_ptr<test_support::NoThreads> none;
  auto owned = std::make_unique<LastThread>(none);
  const LastThread& device = *owned;
  shop.PutDevice(std::move(owned));
  ResilientDevice resilient(kMono, shop.Source(), {});
  EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::TESKAudioError>(
      [&] { resilient.Start(counter); },
      "The watch over the audio device cannot start its thread: Resource temporarily unavailable. Close "
      "other programs."));
  none.reset();
  // Without a thread to close it on it stays open for ever, and hears silence.
  const long long asked = counter.count;
  const int calls = device.calls;
  EXPECT_TRUE(Await([&] { return device.calls > calls + 3; }));
  EXPECT_EQ(counter.count, asked);
}

TEST(ResilientDevice, AClockThatIsRefusedItsThreadTakesLaterWhatHasBeenDueSince) {
  Shop shop;
  Told told;
  Counter counter;
  MortalDevice* const device = shop.Put();
  std::unique_ptr<test_support::NoThreads> none;
  const Clock clock;
  ResilientDevice resilient(kMono, shop.Source(), [&, tell = told.Tell()](const DeviceUpdate& update) {
    if (update.reason == kKilled) none = std::make_unique<test_support::NoThreads>();
    tell(update);
  });
  const Began start = Noting(counter, clock, [&] { resilient.Start(counter); });
  ASSERT_TRUE(Await([&] { return counter.count > 4'000; }));
  const Began loss = Noting(counter, clock, [&] {
    device->failed = true;
    EXPECT_TRUE(told.Is(1));
  });
  const double lost = clock.Seconds();
  while (clock.Seconds() < lost + 0.6) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  const long long asked = counter.count;
  none.reset();
  ASSERT_TRUE(Await([&] { return counter.count > asked; }));
  EXPECT_TRUE(resilient.IsRecovering());
  EXPECT_EQ(told.Get().size(), 1U);
  EXPECT_THAT(told.GetStillAway(), testing::Not(testing::Contains(kKilled))) << "lost once";
  EXPECT_TRUE(IsNotBehind(counter, clock, loss)) << "the show is where the stage is";
  EXPECT_TRUE(IsNotAhead(counter, clock, start));
}

TEST(ResilientDevice, ADeviceThatNobodyHearsIsToldAndToldAgainWhenSomebodyDoes) {
  Shop shop;
  Told told;
  Counter counter;
  MortalDevice* const device = shop.Put();
  device->SetUnheard("Nobody hears it.");
  ResilientDevice resilient(kMono, shop.Source(), told.Tell());
  resilient.Start(counter);
  ASSERT_EQ(told.Get().size(), 1U);
  EXPECT_FALSE(told.Get()[0].recovering);
  EXPECT_EQ(told.Get()[0].unheard, "Nobody hears it.");
  EXPECT_EQ(resilient.WhyUnheard(), "Nobody hears it.");
  device->SetUnheard("");
  ASSERT_TRUE(told.Is(2));
  EXPECT_EQ(told.Get()[1].unheard, "");
  EXPECT_EQ(told.Get()[1].device, "mortal device");
  device->SetUnheard("Nobody any more.");
  ASSERT_TRUE(told.Is(3));
  EXPECT_EQ(told.Get()[2].unheard, "Nobody any more.");
  device->failed = true;
  ASSERT_TRUE(told.Is(4));
  EXPECT_TRUE(told.Get()[3].recovering);
  EXPECT_EQ(told.Get()[3].unheard, "");
}

// Also one that has its frames converted.
TEST(ResilientDevice, ADeviceThatIsStillBeingConnectedIsTakenWhenItIs) {
  Shop shop;
  Told told;
  Counter counter;
  MortalDevice* device = shop.Put();
  ResilientDevice resilient(kMono, shop.Source(), told.Tell());
  resilient.Start(counter);
  device->failed = true;
  ASSERT_TRUE(told.Is(1));
  for (const bool dies : {true, false}) {
    auto found = std::make_unique<MortalDevice>(dies ? kRate : 44'100.0);
    device = found.get();
    device->connecting = true;
    device->SetUnheard("It is connected to nothing.");
    shop.PutDevice(std::move(found));
    ASSERT_TRUE(Await([&] { return device->timesAsked > 20; }));
    EXPECT_TRUE(resilient.IsRecovering()) << "nobody has heard it yet, and somebody may in a moment";
    if (dies) device->failed = true;
  }
  device->SetUnheard("");
  device->connecting = false;
  ASSERT_TRUE(told.Is(2)) << "and the one that had failed meanwhile was let go of";
  EXPECT_FALSE(told.Get()[1].recovering);
  EXPECT_EQ(told.Get()[1].unheard, "");
}

TEST(ResilientDevice, TheFirstDeviceIsWaitedForUntilItTakesSound) {
  for (const bool dies : {false, true}) {
    Shop shop;
    Told told;
    Counter counter;
    MortalDevice* const device = shop.Put();
    device->connecting = true;
    ResilientDevice resilient(kMono, shop.Source(), told.Tell());
    std::jthread later([&] {
      EXPECT_TRUE(Await([&] { return device->timesAsked > 20; }));
      EXPECT_EQ(counter.count, 0) << "a show that began now would stand";
      (dies ? device->failed : device->connecting) = dies;
    });
    resilient.Start(counter);
    later.join();
    ASSERT_TRUE(Await([&] { return counter.count > 4'000; }));
    EXPECT_EQ(told.Get().size(), dies ? 1U : 0U);
  }
}

TEST(ResilientDevice, WhatIsMissingOfItsConnectionsIsToldOnceAndWhenItIsThereAgain) {
  Shop shop;
  Told told;
  Counter counter;
  MortalDevice* const device = shop.Put();
  ResilientDevice resilient(kMono, shop.Source(), told.Tell());
  resilient.Start(counter);
  EXPECT_EQ(told.Get().size(), 0U);
  device->SetMissing("Left is missing.");
  ASSERT_TRUE(told.Is(1));
  EXPECT_FALSE(told.Get()[0].recovering);
  EXPECT_EQ(told.Get()[0].missing, "Left is missing.");
  EXPECT_EQ(told.Get()[0].unheard, "");
  device->SetMissing("");
  ASSERT_TRUE(told.Is(2));
  EXPECT_EQ(told.Get()[1].missing, "");
  device->SetMissing("Right is missing.");
  ASSERT_TRUE(told.Is(3));
  device->failed = true;
  ASSERT_TRUE(told.Is(4));
  EXPECT_TRUE(told.Get()[3].recovering);
  EXPECT_EQ(told.Get()[3].missing, "") << "of what is gone altogether";
}

TEST(ResilientDevice, WhatOneDeviceCountedIsAddedToWhatTheNextOneDoes) {
  Shop shop;
  Told told;
  Counter counter;
  MortalDevice* const device = shop.Put();
  ResilientDevice resilient(kMono, shop.Source(), told.Tell());
  resilient.Start(counter);
  // Besides, a device that makes up for being held up may be given silence.
  const long long silence = 1'000'000;
  device->xruns = 3;
  ASSERT_TRUE(Await([&] { return resilient.GetXrunCount() == 3; }));
  device->xruns = 4;
  device->silentFrames = silence;
  device->failed = true;
  ASSERT_TRUE(told.Is(1));
  ASSERT_EQ(resilient.GetXrunCount(), 4) << "the last of them, too";
  EXPECT_GE(resilient.GetSilentFrames(), silence);
  MortalDevice* const next = shop.Put();
  ASSERT_TRUE(told.Is(2));
  EXPECT_EQ(resilient.GetXrunCount(), 4);
  next->xruns = 2;
  next->silentFrames = silence;
  ASSERT_TRUE(Await([&] { return resilient.GetXrunCount() == 6; }));
  ASSERT_TRUE(Await([&] { return resilient.GetSilentFrames() >= 2 * silence; }));
  EXPECT_LT(resilient.GetSilentFrames(), 3 * silence);
}

TEST(ResilientDevice, ThePriorityIsThatOfTheDeviceThatRuns) {
  Shop shop;
  Told told;
  Counter counter;
  MortalDevice* const device = shop.Put();
  ResilientDevice resilient(kMono, shop.Source(), told.Tell());
  resilient.Start(counter);
  EXPECT_EQ(resilient.GetRealTimePriority(), 7);
  device->failed = true;
  EXPECT_TRUE(Await([&] { return resilient.GetRealTimePriority() == 0; })) << "a clock has none";
}

// Looks on whenever it is asked for its name, which is in the middle of being made known.
class WatchfulDevice : public MortalDevice {
 public:
  explicit WatchfulDevice(std::function<void()> look) : look_(std::move(look)) {}
  std::string GetDescription() const override {
    look_();
    return "second device";
  }

 private:
  const std::function<void()> look_;
};

// Who sees that it is there again and asks which it is must not be told of the clock, nor of its priority.
TEST(ResilientDevice, ADeviceThatIsThereAgainIsKnownByAllThatItIsBeforeItIsSaidToBeThere) {
  Shop shop;
  Told told;
  Counter counter;
  MortalDevice* const first = shop.Put();
  ResilientDevice resilient(kMono, shop.Source(), told.Tell());
  resilient.Start(counter);
  first->failed = true;
  ASSERT_TRUE(told.Is(1));
  std::atomic<int> looks{0};
  std::atomic<bool> isWrong{false};
  shop.PutDevice(std::make_unique<WatchfulDevice>([&] {
    ++looks;
    // In this order, as who is not the watch would ask.
    const bool isThere = !resilient.IsRecovering();
    const bool isKnown =
        resilient.GetDescription() == "second device" && resilient.GetRealTimePriority() == 7;
    if (isThere && !isKnown) isWrong = true;
  }));
  ASSERT_TRUE(told.Is(2));
  EXPECT_EQ(told.Get()[1].device, "second device");
  resilient.Stop();
  EXPECT_GE(looks, 1);
  EXPECT_FALSE(isWrong);
}

TEST(ResilientDevice, ADeviceThatTakesFramesTooFastMovesTheShowByAMomentAtMost) {
  Shop shop;
  Told told;
  Counter counter;
  TestDevice* const device = shop.PutTestDevice();
  ResilientDevice resilient(kMono, shop.Source(), told.Tell());
  const Clock clock;
  const Began start = Noting(counter, clock, [&] {
    resilient.Start(counter);
    device->Spin(true);
  });
  const Began loss = Noting(counter, clock, [&] { EXPECT_TRUE(told.Is(1)); });
  EXPECT_EQ(told.Get()[0].reason, "test device: it takes sound faster than time passes.");
  EXPECT_LT(PlaceIn(counter), clock.Seconds() * 1.05 + 0.16);
  EXPECT_TRUE(IsNotBehind(counter, clock, loss));
  EXPECT_TRUE(IsNotAhead(counter, clock, start));
}

TEST(ResilientDevice, WithoutADeviceTheClockBeginsAndSaysWhy) {
  Shop shop;
  Told told;
  Counter counter;
  ResilientDevice resilient(kMono, shop.Source(), told.Tell());
  resilient.Start(counter);
  ASSERT_EQ(told.Get().size(), 1U);
  EXPECT_TRUE(told.Get()[0].recovering);
  EXPECT_EQ(told.Get()[0].reason, "The shop is empty.");
  EXPECT_EQ(resilient.GetDescription(), "a clock without sound, 48000 Hz, 256 frames a period");
  ASSERT_TRUE(Await([&] { return counter.count > 1'000; }));
  shop.Put();
  ASSERT_TRUE(told.Is(2));
  EXPECT_FALSE(told.Get()[1].recovering);
  EXPECT_EQ(told.Get()[1].device, "mortal device");
}

TEST(ResilientDevice, WhatIsLostIsLookedForOnceASecond) {
  struct Tries {
    std::vector<double> Get() {
      const std::lock_guard lock(mutex);
      return at;
    }
    const Clock clock;
    std::mutex mutex;
    std::vector<double> at;  // seconds
  };
  // A search that nobody wants any more may still ask when this test is over.
  const auto tries = std::make_shared<Tries>();
  Counter counter;
  ResilientDevice resilient(kMono,
                            [tries]() -> std::unique_ptr<Device> {
                              const std::lock_guard lock(tries->mutex);
                              tries->at.push_back(tries->clock.Seconds());
                              throw tesk_audio::TESKAudioError("The shop is empty.");
                            },
                            {});
  resilient.Start(counter);
  ASSERT_TRUE(Await([&] { return tries->Get().size() > 2; }));
  const std::vector<double> at = tries->Get();
  EXPECT_GE(at[2] - at[0], 2.0);
  EXPECT_LT(at[2] - at[0], 8.0) << "this machine may be held up";
}

TEST(ResilientDevice, WhyALostDeviceStaysAwayIsToldWheneverItChanges) {
  Shop shop;
  Told told;
  Counter counter;
  MortalDevice* const device = shop.Put();
  ResilientDevice resilient(kMono, shop.Source(), told.Tell());
  resilient.Start(counter);
  device->failed = true;
  ASSERT_TRUE(Await([&] { return told.GetStillAway().size() == 1; }));
  shop.SayWhyEmpty("The shop is closed.");
  ASSERT_TRUE(Await([&] { return told.GetStillAway().size() == 2; }));
  MortalDevice* const next = shop.Put();
  ASSERT_TRUE(told.Is(2));
  EXPECT_THAT(told.GetStillAway(), testing::ElementsAre("The shop is empty.", "The shop is closed."));
  next->failed = true;
  ASSERT_TRUE(Await([&] { return told.GetStillAway().size() == 3; })) << "of the next loss again";
  EXPECT_EQ(told.GetStillAway()[2], "The shop is closed.");
  EXPECT_EQ(told.Get().size(), 3U);
}

TEST(ResilientDevice, OpeningThatHangsHoldsNobodyUp) {
  std::promise<void> hang;
  const std::shared_future<void> end(hang.get_future());
  Counter counter;
  Told told;
  const Clock clock;
  {
    ResilientDevice resilient(
        kMono,
        [end]() -> std::unique_ptr<Device> {
          end.wait();
          return std::make_unique<MortalDevice>();
        },
        told.Tell());
    resilient.Start(counter);
    EXPECT_EQ(told.Get().at(0).reason, "The audio device does not answer.");
    ASSERT_TRUE(Await([&] { return counter.count > 1'000; }));
  }
  EXPECT_LT(clock.Seconds(), 60.0);
  const long long count = counter.count;
  hang.set_value();
  EXPECT_EQ(counter.count, count) << "what is opened too late is closed again";
}

TEST(ResilientDevice, AnOpeningThatHangsForLongIsTriedAgainBesideIt) {
  std::promise<void> hang;
  const std::shared_future<void> end(hang.get_future());
  std::atomic<int> tries{0};
  Counter counter;
  Told told;
  {
    ResilientDevice resilient(
        {kRate, 1, 256, 0.5},
        [&tries, end]() -> std::unique_ptr<Device> {
          if (++tries < 3) end.wait();
          return std::make_unique<MortalDevice>();
        },
        told.Tell());
    resilient.Start(counter);
    ASSERT_TRUE(Await([&] { return !resilient.IsRecovering(); }));
    EXPECT_EQ(tries, 3);
    EXPECT_EQ(resilient.GetDescription(), "mortal device");
    EXPECT_EQ(told.Get().at(0).reason, "The audio device does not answer.");
    EXPECT_TRUE(told.GetStillAway().empty()) << "said once";
  }
  hang.set_value();
}

TEST(ResilientDevice, OfOpeningsThatHangThereAreFourAtMost) {
  std::promise<void> hang;
  const std::shared_future<void> end(hang.get_future());
  const auto tries = std::make_shared<std::atomic<int>>(0);
  Shop shop;
  Told told;
  Counter counter;
  MortalDevice* const device = shop.Put();
  std::atomic<bool> isFirst{true};
  {
    ResilientDevice resilient(
        {kRate, 1, 256, 0.5},
        [&, end, tries]() -> std::unique_ptr<Device> {
          if (isFirst.exchange(false)) return shop.Source()();
          ++*tries;
          end.wait();
          return std::make_unique<MortalDevice>();
        },
        told.Tell());
    resilient.Start(counter);
    device->failed = true;
    ASSERT_TRUE(Await([&] { return told.GetStillAway().size() == 1; }));
    EXPECT_EQ(told.GetStillAway()[0], "The audio device does not answer.");
    ASSERT_TRUE(Await([&] { return *tries == 4; }));
    const long long count = counter.count;
    ASSERT_TRUE(Await([&] { return counter.count > count + 9'600; }));
    EXPECT_EQ(*tries, 4);
    hang.set_value();
    ASSERT_TRUE(Await([&] { return !resilient.IsRecovering(); })) << "the last one is still waited for";
  }
}

// Does not come back from being stopped until it is let go.
class HangingDevice : public MortalDevice {
 public:
  explicit HangingDevice(std::shared_future<void> end) : end_(std::move(end)) {}
  void Stop() override {
    end_.wait();
    MortalDevice::Stop();
  }

 private:
  std::shared_future<void> end_;
};

TEST(ResilientDevice, ClosingThatHangsHoldsNobodyUpAndTheDeviceHearsSilence) {
  std::promise<void> hang;
  const std::shared_future<void> end(hang.get_future());
  Shop shop;
  Told told;
  Counter counter;
  auto owned = std::make_unique<HangingDevice>(end);
  MortalDevice* const device = owned.get();
  shop.PutDevice(std::move(owned));
  const Clock clock;
  {
    ResilientDevice resilient(kMono, shop.Source(), told.Tell());
    const Began start = Noting(counter, clock, [&] { resilient.Start(counter); });
    device->failed = true;
    ASSERT_TRUE(told.Is(1));
    shop.Put();
    ASSERT_TRUE(told.Is(2));
    EXPECT_TRUE(KeepsTime(counter, clock, start)) << "the old device goes on asking, and gets nothing";
  }
  EXPECT_LT(clock.Seconds(), 60.0);
  hang.set_value();
}

// Hardly faster than time passes, and only what is ready. Returns how many frames.
int TurnInTime(TestDevice* device) {
  constexpr int kFrames = 256;
  std::this_thread::sleep_for(std::chrono::microseconds(5'400));
  if (!device->IsReady(kFrames)) return 0;
  device->Turn(kFrames);
  return kFrames;
}

TEST(ResilientDevice, ADeviceOfAnotherRateHasItsFramesConverted) {
  Shop shop;
  Told told;
  Counter counter;
  constexpr unsigned kOtherRate = 44'100;
  auto owned = std::make_unique<TestDevice>(kOtherRate, 1, 256);
  TestDevice* const device = owned.get();
  shop.PutDevice(std::move(owned));
  ResilientDevice resilient(kMono, shop.Source(), told.Tell());
  resilient.Start(counter);
  EXPECT_EQ(resilient.GetRateHz(), kRate);
  EXPECT_EQ(resilient.GetDescription(), "test device, converted from 48000 Hz");
  int taken = 0;
  while (taken < static_cast<int>(kOtherRate) && told.Get().empty()) taken += TurnInTime(device);
  EXPECT_TRUE(told.Get().empty());
  // More by what is ready, and less by the silence that is taken first.
  const double due = taken * kRate / kOtherRate;
  EXPECT_GT(static_cast<double>(counter.count), due - 1'500.0) << "48 000 frames a second, and not 44 100";
  EXPECT_LT(static_cast<double>(counter.count), due + 1'500.0);
}

// A live output on such a device.
struct Stage {
  explicit Stage(tesk_audio::DeviceLossPolicy policy) : player(Songs{{.frames = 15'000'000}}) {
    tesk_audio::OutputSettings settings;
    settings.crossfadeMs = settings.fadeMs = 0.0;
    settings.onDeviceLoss = policy;
    device = shop.Put();
    output = std::make_unique<tesk_audio::LiveSampleOutput>(
        player, std::make_unique<ResilientDevice>(kMono, shop.Source(), told.Tell()), settings);
    player.SetOutput(output.get());
    player.RewindAndRefill();
    player.SetPlays(true);
    output->Start();
  }
  bool Plays(long long frames) {
    return Await([&] { return output->GetElapsedSampleCount() > frames; });
  }

  Shop shop;
  Told told;
  ScriptedPlayer player;
  MortalDevice* device = nullptr;
  std::unique_ptr<tesk_audio::LiveSampleOutput> output;
};

TEST(LiveOutputOnDeviceLoss, RunOnCountsOnUnheardAndLosesNothing) {
  Stage stage(tesk_audio::DeviceLossPolicy::RunOn);
  ASSERT_TRUE(stage.Plays(4'800));
  stage.device->failed = true;
  ASSERT_TRUE(stage.told.Is(1));
  ASSERT_TRUE(stage.Plays(stage.output->GetElapsedSampleCount() + 48'000));
  EXPECT_TRUE(stage.output->GetOutputIsRunning());
  EXPECT_EQ(stage.player.Log(), "") << "the player knows nothing of it";
}

TEST(LiveOutputOnDeviceLoss, HoldPausesWhereItWasAndGoesOnWithTheNextFrame) {
  Stage stage(tesk_audio::DeviceLossPolicy::Hold);
  ASSERT_TRUE(stage.Plays(4'800));
  stage.device->failed = true;
  ASSERT_TRUE(Await([&] { return !stage.output->GetOutputIsRunning(); }));
  stage.shop.Put();
  ASSERT_TRUE(stage.told.Is(2));
  const long long held = stage.output->GetElapsedSampleCount();
  stage.output->Pause();
  EXPECT_EQ(stage.output->GetElapsedSampleCount(), held);
  stage.output->Start();
  ASSERT_TRUE(stage.Plays(held + 4'800));
}

TEST(LiveOutputOnDeviceLoss, HoldGoesOnWithWhatTheDeviceHadTakenAndNotPlayed) {
  Shop shop;
  Told told;
  ScriptedPlayer player(Songs{{.frames = 15'000'000}});
  tesk_audio::OutputSettings settings;
  settings.crossfadeMs = settings.fadeMs = 0.0;
  settings.onDeviceLoss = tesk_audio::DeviceLossPolicy::Hold;
  constexpr unsigned kLatency = 2'048;
  TestDevice* const lost = shop.PutTestDevice();
  lost->latency = kLatency;
  auto output = std::make_unique<tesk_audio::LiveSampleOutput>(
      player, std::make_unique<ResilientDevice>(kMono, shop.Source(), told.Tell()), settings);
  player.SetOutput(output.get());
  player.RewindAndRefill();
  player.SetPlays(true);
  output->Start();
  std::vector<float> before;
  ASSERT_TRUE(Await([&] {
    TurnInTime(lost);
    before = lost->Heard();
    return before.size() > 3 * kLatency;
  }));
  ASSERT_TRUE(told.Is(1)) << "it asks for nothing any more";
  ASSERT_TRUE(Await([&] { return !output->GetOutputIsRunning(); }));
  EXPECT_EQ(output->GetElapsedSampleCount(), static_cast<long long>(before.size()) - kLatency);
  TestDevice* const found = shop.PutTestDevice();
  ASSERT_TRUE(Await([&] {
    TurnInTime(found);
    return told.Get().size() == 2;
  }));
  // The device's own fade-in, in silence.
  for (int i = 0; i < 10; ++i) TurnInTime(found);
  EXPECT_EQ(found->HeardCount(), 0U);
  output->Start();
  ASSERT_TRUE(Await([&] {
    TurnInTime(found);
    return found->HeardCount() > 2 * kLatency;
  }));
  const std::vector<float> after = found->Heard();
  std::vector<float> expected = before;
  expected.resize(before.size() - kLatency);
  expected.insert(expected.end(), after.begin(), after.end());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    ASSERT_EQ(expected[i], ScriptedPlayer::Sample(static_cast<long long>(i)));
  }
  output.reset();
}

TEST(LiveOutputOnDeviceLoss, EndStopsAndTellsThePlayer) {
  Stage stage(tesk_audio::DeviceLossPolicy::End);
  ASSERT_TRUE(stage.Plays(4'800));
  stage.device->failed = true;
  ASSERT_TRUE(Await([&] { return stage.player.HasStopped(); }));
  EXPECT_FALSE(stage.output->GetOutputIsRunning());
}

}  // namespace
