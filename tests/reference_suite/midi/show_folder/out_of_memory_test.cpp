// Memory that runs out at the first, the second, the third ... allocation of loading a show.
#include <gtest/gtest.h>

#include <new>

#include "suite/utility/listdir.h"
#include "tests/reference_suite/midi/show_folder/show_on_disk.h"
#include "tests/support/refused_allocations.h"

// Stands in for the utility library's: listing a folder is not what is tested here.
std::vector<std::string> exc::listdir(const std::string& /*folder*/) {
  return {"3 Waltz.mid", "3 Waltz.toml"};
}

namespace {

using test_support::RefusedAllocations;

// What is told while a song is loaded, and before and behind that.
std::string NotEnough(const tesk_midi::Problem& problem, const std::string& show) {
  const std::string what = problem.file == "songs/3 Waltz.mid" ? "for song 3 of" : "to load";
  return "there is not enough memory " + what + " \"" + show + "\"; end other programs and open it again.";
}

class OutOfMemory : public testing::TestWithParam<bool> {
 protected:
  OutOfMemory() {
    show_.Write("show.toml", "title = \"A title that is longer than any small string\"\norder = [\"3\"]\n");
    show_.WriteMidi("songs/3 Waltz.mid");
    show_.Write(
        "songs/3 Waltz.toml",
        "attacca = true\n[[marker]]\nat = \"1\"\nname = \"A name that is longer than any small string\"\n"
        "[[vamp]]\nfrom = \"9\"\nto = { tick = 60000 }\n[[cut]]\nfrom = \"40\"\nto = \"end\"\n");
  }

  // "loaded", "in words" or "bad_alloc".
  std::string LoadFailingAt(long allocation) {
    const std::string name = show_.Name();
    std::string result = "loaded";
    RefusedAllocations refused(RefusedAllocations::Of::ThisThread, allocation, GetParam());
    try {
      tesk_midi::LoadShow(name);
      refused.End();
    } catch (const tesk_midi::ShowError& error) {
      refused.End();
      const tesk_midi::Problem& problem = error.GetProblems().at(0);
      (problem.file.empty() ? toldOfTheShow_ : toldOfTheSong_) = true;
      result = problem.message == NotEnough(problem, name) ? "in words" : error.what();
    } catch (const std::bad_alloc&) {
      refused.End();
      result = "bad_alloc";
    }
    return result;
  }

  made_show::ShowOnDisk show_;
  bool toldOfTheShow_ = false;
  bool toldOfTheSong_ = false;
};

// One failure is told in words; when nothing can be allocated any more, not even words can.
TEST_P(OutOfMemory, AtEveryAllocationEndsInAnException) {
  long allocation = 0;
  std::string result;
  for (; (result = LoadFailingAt(allocation)) != "loaded"; ++allocation) {
    const bool told = result == "in words" || (GetParam() && result == "bad_alloc");
    ASSERT_TRUE(told) << allocation << ": " << result;
    ASSERT_LT(allocation, 100'000);
  }
  EXPECT_GT(allocation, 50);
  EXPECT_TRUE(toldOfTheShow_ || GetParam());
  EXPECT_TRUE(toldOfTheSong_ || GetParam());
}

INSTANTIATE_TEST_SUITE_P(OnceAndFromThenOn, OutOfMemory, testing::Bool());

}  // namespace
