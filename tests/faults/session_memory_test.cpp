// Memory that runs out at the n-th allocation of opening a show, loading a song and playing it, once and from
// then on, on whichever thread. This program's own operator new fails on demand.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

#include "host/session/session.h"
#include "tests/host/show_files.h"

namespace {

std::atomic<long> allocationsLeft{-1};  // negative: none is refused
std::atomic<bool> refusesForGood{false};
std::atomic<long> refusals{0};

bool IsRefused() {
  if (allocationsLeft < 0) return false;
  const long left = allocationsLeft--;
  if (left > 0) return false;
  if (refusesForGood) allocationsLeft = 0;
  ++refusals;
  return true;
}

}  // namespace

// g++ inlines these operators and then takes the memory of the one for the memory of another.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

void* operator new(std::size_t size) {
  void* const memory = IsRefused() ? nullptr : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

namespace {

using orbel::host::OutputChoice;
using orbel::host::OutputKind;
using orbel::host::Session;
using orbel::host::Step;

// Frames that the first song plays; -1 when that was refused, and `words` why.
long long PlayWith(long granted, bool forGood, const std::string& show, std::string* words) {
  long long frames = 0;
  refusesForGood = forGood;
  allocationsLeft = granted;
  try {
    Session session(show, "", OutputKind::Offline, OutputChoice{});
    session.Do({orbel::host::CommandKind::Play, 0.0, ""});
    Step step;
    while (orbel::host::RenderStep(
        &step, [&](const float*, std::size_t count) { frames += static_cast<long long>(count); })) {
      for (const orbel::host::StageEvent& event : session.TakeEvents()) {
        if (event.kind == orbel::host::StageEvent::Kind::LoadFailed) session.ThrowLoaderError();
      }
      if (session.HasEnded()) break;
    }
    allocationsLeft = -1;
    return frames;
  } catch (const std::exception& error) {
    allocationsLeft = -1;
    *words = error.what();
    return -1;
  }
}

class RefusedAllocation : public testing::TestWithParam<bool> {};

// Every one of them with ORBEL_EVERY_ALLOCATION set, otherwise a sample, which is another one for each n.
TEST_P(RefusedAllocation, OfASessionIsToldAndTheNextOnePlays) {
  host_tests::ShowFiles files;
  files.AddSong("1", "Waltz", 1,
                "[[marker]]\nat = \"1.2\"\nname = \"A name of more than sixteen letters\"\n");
  files.AddSong("2", "Polka", 1);
  std::string words;
  const long long whole = PlayWith(-1, false, files.Show(), &words);
  ASSERT_EQ(whole, static_cast<long long>(host_tests::ShowFiles::kRate));
  const bool every = std::getenv("ORBEL_EVERY_ALLOCATION") != nullptr;
  const char* const from = std::getenv("ORBEL_FIRST_ALLOCATION");
  long refused = 0;
  for (long granted = from != nullptr ? std::atol(from) : 0;; granted += every ? 1 : 1 + granted % 41) {
    if (every) std::cerr << granted << ' ';
    ::alarm(20);  // whoever waits for ever is ended with a signal
    words.clear();
    refusals = 0;
    const long long frames = PlayWith(granted, GetParam(), files.Show(), &words);
    refused += frames < 0 ? 1 : 0;
    EXPECT_TRUE(frames > 0 || !words.empty()) << granted << ": " << words;
    if (every) std::cerr << words << '\n';
    if (refusals == 0) break;  // there was enough for everything
    ASSERT_LT(granted, 200'000);
  }
  EXPECT_GT(refused, 5);  // opening is tried again, so that a refusal can go unnoticed
  EXPECT_EQ(PlayWith(-1, false, files.Show(), &words), whole);
}

INSTANTIATE_TEST_SUITE_P(OnceAndFromThenOn, RefusedAllocation, testing::Bool());

}  // namespace
