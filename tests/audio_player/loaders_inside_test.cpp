#include "Sources/audio_player/loaders_inside.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

#include "tests/support/sleeping_thread.h"

namespace {

TEST(LoadersInside, NobodyIsWaitedForWhenNobodyIsInside) {
  LoadersInside place;
  place.WaitUntilNone();
}

TEST(LoadersInside, EveryVisitIsWaitedFor) {
  const auto place = std::make_shared<LoadersInside>();
  std::optional<LoadersInside::Visit> first(std::in_place, place);
  std::optional<LoadersInside::Visit> second(std::in_place, place);
  std::atomic<pid_t> id{0};
  std::atomic<bool> returned{false};
  std::thread waiting([&] {
    id = test_support::ThisThread();
    place->WaitUntilNone();
    returned = true;
  });
  while (id == 0) std::this_thread::yield();
  EXPECT_TRUE(test_support::WaitUntilItSleeps(id));
  first.reset();
  EXPECT_TRUE(test_support::WaitUntilItSleeps(id));
  EXPECT_FALSE(returned);
  second.reset();
  waiting.join();
}

TEST(LoadersInside, OneVisitIsWaitedFor) {
  const auto place = std::make_shared<LoadersInside>();
  std::optional<LoadersInside::Visit> visit(std::in_place, place);
  std::atomic<pid_t> id{0};
  std::atomic<bool> returned{false};
  std::thread waiting([&] {
    id = test_support::ThisThread();
    place->WaitUntilNone();
    returned = true;
  });
  while (id == 0) std::this_thread::yield();
  EXPECT_TRUE(test_support::WaitUntilItSleeps(id));
  EXPECT_FALSE(returned);
  visit.reset();
  waiting.join();
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
