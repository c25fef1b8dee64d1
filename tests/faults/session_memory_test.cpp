// Memory that runs out at the n-th allocation of opening a show, loading a song and playing it, once and from
// then on, on whichever thread.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <new>
#include <string>

#include "host/session/session.h"
#include "tests/host/show_files.h"
#include "tests/support/refused_allocations.h"

namespace {

using orbel::host::OutputChoice;
using orbel::host::OutputKind;
using orbel::host::Session;
using orbel::host::Step;
using test_support::RefusedAllocations;

// The program says it then in words that it has had from the start, with the show.
const char* const kWithoutMemoryForWords = "std::bad_alloc";

// Frames that the first song plays; -1 when that was refused, and `words` why.
long long Play(RefusedAllocations* refused, const std::string& show, std::string* words) {
  long long frames = 0;
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
    // The end has memory.
    if (refused != nullptr) refused->End();
    return frames;
  } catch (const std::bad_alloc&) {
    if (refused != nullptr) refused->End();
    *words = kWithoutMemoryForWords;
  } catch (const std::exception& error) {
    if (refused != nullptr) refused->End();
    *words = error.what();
  }
  return -1;
}

// What the documentation promises: that memory is short, and for what.
bool NamesWhatLacksMemory(const std::string& words, const std::string& show) {
  if (words == kWithoutMemoryForWords) return true;
  const auto has = [&](const std::string& text) { return words.find(text) != std::string::npos; };
  return has("there is not enough memory") && (has(show) || has("songs/1 Waltz.") || has("songs/2 Polka."));
}

class RefusedAllocation : public testing::TestWithParam<bool> {};

// Every one of them with ORBEL_EVERY_ALLOCATION set, otherwise a sample, which is another one for each n.
TEST_P(RefusedAllocation, OfASessionIsToldAndTheNextOnePlays) {
  host_tests::ShowFiles files;
  files.AddSong("1", "Waltz", 1,
                "[[marker]]\nat = \"1.2\"\nname = \"A name of more than sixteen letters\"\n");
  files.AddSong("2", "Polka", 1);
  const std::string show = files.Show();
  std::string words;
  const long long whole = Play(nullptr, show, &words);
  ASSERT_EQ(whole, static_cast<long long>(host_tests::ShowFiles::kRate));
  const bool every = std::getenv("ORBEL_EVERY_ALLOCATION") != nullptr;
  const char* const from = std::getenv("ORBEL_FIRST_ALLOCATION");
  long refused = 0;
  for (long granted = from != nullptr ? std::atol(from) : 0;; granted += every ? 1 : 1 + granted % 41) {
    if (every) std::cerr << granted << ' ';
    ::alarm(60);  // whoever waits for ever is ended with a signal, and a busy machine is not
    words.clear();
    RefusedAllocations refusals(RefusedAllocations::Of::AllThreads, granted, GetParam());
    const long long frames = Play(&refusals, show, &words);
    refused += frames < 0 ? 1 : 0;
    EXPECT_TRUE(frames > 0 || NamesWhatLacksMemory(words, show)) << granted << ": " << words;
    if (every) std::cerr << words << '\n';
    if (refusals.Count() == 0) break;  // there was enough for everything
    ASSERT_LT(granted, 200'000);
  }
  EXPECT_GT(refused, 5);  // opening is tried again, so that a refusal can go unnoticed
  EXPECT_EQ(Play(nullptr, show, &words), whole);
}

INSTANTIATE_TEST_SUITE_P(OnceAndFromThenOn, RefusedAllocation, testing::Bool());

}  // namespace
