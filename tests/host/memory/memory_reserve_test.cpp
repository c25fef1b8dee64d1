#include "host/memory/memory_reserve.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <random>
#include <thread>
#include <vector>

namespace orbel::host {
namespace {

constexpr std::size_t kNearlyAll = MemoryReserve::kBytes - 64;

class Reserve : public testing::Test {
 protected:
  static void SetUpTestSuite() { reserve_ = new MemoryReserve(); }
  static void TearDownTestSuite() { delete reserve_; }
  // Whatever a test did, all of it is there again for the next one.
  void TearDown() override {
    void* const all = reserve_->Allocate(kNearlyAll);
    EXPECT_NE(all, nullptr);
    reserve_->Free(all);
  }
  static MemoryReserve* reserve_;
};

MemoryReserve* Reserve::reserve_ = nullptr;

TEST_F(Reserve, GivesWhatFitsAndNoMore) {
  EXPECT_EQ(reserve_->Allocate(MemoryReserve::kBytes + 1), nullptr);
  EXPECT_EQ(reserve_->Allocate(static_cast<std::size_t>(-1)), nullptr);
  void* const all = reserve_->Allocate(kNearlyAll);
  ASSERT_NE(all, nullptr);
  EXPECT_EQ(reserve_->Allocate(64), nullptr);
  reserve_->Free(all);
}

TEST_F(Reserve, KnowsItsOwn) {
  int other = 0;
  void* const memory = reserve_->Allocate(100);
  EXPECT_TRUE(reserve_->Holds(memory));
  EXPECT_GE(MemoryReserve::SizeOf(memory), 100U);
  EXPECT_FALSE(reserve_->Holds(&other));
  EXPECT_FALSE(reserve_->Holds(nullptr));
  reserve_->Free(memory);
}

TEST_F(Reserve, GivesPiecesOfNothingToo) {
  void* const one = reserve_->Allocate(0);
  void* const other = reserve_->Allocate(0);
  EXPECT_NE(one, nullptr);
  EXPECT_NE(one, other);
  reserve_->Free(one);
  reserve_->Free(other);
}

TEST_F(Reserve, JoinsWhatIsGivenBackInAnyOrder) {
  const std::size_t third = MemoryReserve::kBytes / 3 - 64;
  std::vector<void*> thirds;
  for (int i = 0; i < 3; ++i) thirds.push_back(reserve_->Allocate(third));
  ASSERT_NE(thirds.back(), nullptr);
  reserve_->Free(thirds[1]);
  reserve_->Free(thirds[0]);
  void* const two = reserve_->Allocate(2 * third);
  EXPECT_EQ(two, thirds[0]);
  reserve_->Free(thirds[2]);
  reserve_->Free(two);
}

// Each piece is filled with a pattern of its own, which nobody else's changes.
TEST_F(Reserve, KeepsPiecesApartThroughAnyOrderOfThem) {
  std::mt19937 random(20261122);
  std::map<unsigned char*, std::size_t> taken;
  const auto pattern = [](const unsigned char* memory) {
    return static_cast<int>((reinterpret_cast<std::uintptr_t>(memory) >> 4U) & 0xFFU);
  };
  int refused = 0;
  for (int step = 0; step < 20'000; ++step) {
    if (random() % 5 < 3) {
      const std::size_t bytes = random() % (random() % 50 == 0 ? 2'000'000 : 3'000);
      auto* const memory = static_cast<unsigned char*>(reserve_->Allocate(bytes));
      if (memory == nullptr) {
        ++refused;
        continue;
      }
      ASSERT_EQ(reinterpret_cast<std::uintptr_t>(memory) % alignof(std::max_align_t), 0U);
      ASSERT_TRUE(taken.emplace(memory, bytes).second);
      std::memset(memory, pattern(memory), bytes);
    } else if (!taken.empty()) {
      auto piece = std::next(taken.begin(), static_cast<std::ptrdiff_t>(random() % taken.size()));
      const auto [memory, bytes] = *piece;
      for (std::size_t i = 0; i < bytes; ++i) ASSERT_EQ(memory[i], pattern(memory));
      reserve_->Free(memory);
      taken.erase(piece);
    }
  }
  EXPECT_GT(refused, 0);
  for (const auto& [memory, bytes] : taken) reserve_->Free(memory);
}

TEST_F(Reserve, IsForEveryThreadAtOnce) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([i] {
      for (int round = 0; round < 2'000; ++round) {
        auto* const memory = static_cast<unsigned char*>(reserve_->Allocate(1'000));
        ASSERT_NE(memory, nullptr);
        std::memset(memory, i, 1'000);
        for (int at = 0; at < 1'000; at += 333) ASSERT_EQ(memory[at], i);
        reserve_->Free(memory);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace orbel::host
