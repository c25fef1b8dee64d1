// Memory that runs out at the first, the second, the third ... allocation of loading a show.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "suite/utility/listdir.h"
#include "tests/reference_suite/midi/show_folder/show_on_disk.h"

namespace {

long allocationsUntilFailure = -1;  // -1: none fails
bool goesOnFailing = false;

void* Allocate(std::size_t size) {
  if (allocationsUntilFailure == 0) {
    if (!goesOnFailing) allocationsUntilFailure = -1;
    return nullptr;
  }
  if (allocationsUntilFailure > 0) --allocationsUntilFailure;
  return std::malloc(size);
}

}  // namespace

// g++ inlines these operators and then takes the memory of the one for the memory of another.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

void* operator new(std::size_t size) {
  if (void* memory = Allocate(size)) return memory;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}

// Stands in for the utility library's: listing a folder is not what is tested here.
std::vector<std::string> exc::listdir(const std::string& /*folder*/) {
  return {"3 Waltz.mid", "3 Waltz.toml"};
}

namespace {

const char kNotEnough[] =
    "there is not enough memory to load the show; end other programs and open it again.";

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
    goesOnFailing = GetParam();
    allocationsUntilFailure = allocation;
    try {
      tesk_midi::LoadShow(name);
      allocationsUntilFailure = -1;
    } catch (const tesk_midi::ShowError& error) {
      allocationsUntilFailure = -1;
      result = error.GetProblems().at(0).message == kNotEnough ? "in words" : error.what();
    } catch (const std::bad_alloc&) {
      allocationsUntilFailure = -1;
      result = "bad_alloc";
    }
    return result;
  }

  made_show::ShowOnDisk show_;
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
}

INSTANTIATE_TEST_SUITE_P(OnceAndFromThenOn, OutOfMemory, testing::Bool());

}  // namespace
