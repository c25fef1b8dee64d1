#include "Sources/audio_player/loaders_inside.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

#include "tests/support/sleeping_thread.h"

namespace {

// Waits until nobody is inside, on a thread of its own.
class Waiting {
 public:
  explicit Waiting(std::shared_ptr<LoadersInside> place)
      : thread_([this, place = std::move(place)] {
          id_ = test_support::ThisThread();
          place->WaitUntilNone();
          returned_ = true;
        }) {
    while (id_ == 0) std::this_thread::yield();
  }
  bool Sleeps() const { return test_support::WaitUntilItSleeps(id_); }
  bool HasReturned() const { return returned_; }
  void Join() { thread_.join(); }

 private:
  std::atomic<pid_t> id_{0};
  std::atomic<bool> returned_{false};
  std::thread thread_;
};

TEST(LoadersInside, NobodyIsWaitedForWhenNobodyIsInside) {
  LoadersInside place;
  place.WaitUntilNone();
}

TEST(LoadersInside, EveryVisitIsWaitedFor) {
  const auto place = std::make_shared<LoadersInside>();
  std::optional<LoadersInside::Visit> first(std::in_place, place);
  std::optional<LoadersInside::Visit> second(std::in_place, place);
  Waiting waiting(place);
  EXPECT_TRUE(waiting.Sleeps());
  first.reset();
  EXPECT_TRUE(waiting.Sleeps());
  EXPECT_FALSE(waiting.HasReturned());
  second.reset();
  waiting.Join();
}

TEST(LoadersInside, OneVisitIsWaitedFor) {
  const auto place = std::make_shared<LoadersInside>();
  std::optional<LoadersInside::Visit> visit(std::in_place, place);
  Waiting waiting(place);
  EXPECT_TRUE(waiting.Sleeps());
  EXPECT_FALSE(waiting.HasReturned());
  visit.reset();
  waiting.Join();
}

// It outlives the player that made it.
TEST(LoadersInside, AVisitKeepsThePlaceAlive) {
  auto place = std::make_shared<LoadersInside>();
  const std::weak_ptr<LoadersInside> watched = place;
  {
    const LoadersInside::Visit visit(place);
    place.reset();
    EXPECT_FALSE(watched.expired());
  }
  EXPECT_TRUE(watched.expired());
}

}  // namespace
