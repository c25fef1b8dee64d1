// Memory that the system refuses to everybody in the program, the libraries that decode included.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"
#include "tests/support/limit.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::RunningOrbel;
using host_tests::ShowFiles;
using test_support::Limit;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

constexpr rlim_t kMegabyte = 1'000'000;
// Below that not even the program's libraries find a place; from the last on nothing is refused.
constexpr rlim_t kLeast = 60 * kMegabyte;
constexpr rlim_t kEnough = 2000 * kMegabyte;

class AddressSpace : public testing::Test {
 protected:
  Ended RunWithin(rlim_t bytes, const std::vector<std::string>& arguments) {
    std::unique_ptr<RunningOrbel> running;
    {
      const Limit limit(RLIMIT_AS, bytes);
      running = std::make_unique<RunningOrbel>(arguments);
    }
    EXPECT_TRUE(running->EndsWithin(std::chrono::minutes(1))) << "it hangs";
    return running->WaitForEnd();
  }
  // By itself, in words that name the show or a file of it, and without a file that is not whole.
  void ExpectToldOrDone(const Ended& run, const std::string& told) {
    EXPECT_THAT(run.messages, Not(HasSubstr("terminate called"))) << run.status;
    EXPECT_THAT(run.status, AnyOf(0, 1, 5)) << run.messages;
    EXPECT_EQ(std::filesystem::exists(Out()), run.status == 0 && isRender_);
    EXPECT_FALSE(std::filesystem::exists(Out() + ".part"));
    if (run.status == 0) return;
    ++refusals_;
    EXPECT_THAT(told, AnyOf(HasSubstr(show_), HasSubstr("data/"), HasSubstr("songs/")));
    EXPECT_THAT(told, AnyOf(HasSubstr("memory"), HasSubstr("resources")));
  }
  std::string Out() const { return files_.Beside("out.wav"); }

  ShowFiles files_;
  const std::string show_ = files_.Beside("demo");
  bool isRender_ = false;
  int refusals_ = 0;
};

// Threads race for what is left, so that no two runs are refused the same.
TEST_F(AddressSpace, ThatIsShortEndsARenderOrACheckInWordsAndNotByASignal) {
  ASSERT_EQ(Orbel({"demo", show_}).status, 0);
  for (rlim_t bytes = kLeast; bytes < 300 * kMegabyte; bytes += 12 * kMegabyte) {
    SCOPED_TRACE(bytes);
    isRender_ = true;
    std::filesystem::remove(Out());
    const Ended render = RunWithin(bytes, {"render", show_, "-o", Out()});
    ExpectToldOrDone(render, render.messages);
    isRender_ = false;
    std::filesystem::remove(Out());
    const Ended check = RunWithin(bytes, {"check", show_});
    ExpectToldOrDone(check, check.messages + check.out);
    if (HasFailure()) return;
  }
  EXPECT_GT(refusals_, 10);
  isRender_ = true;
  EXPECT_EQ(RunWithin(kEnough, {"render", show_, "-o", Out()}).status, 0);
}

TEST_F(AddressSpace, ThatIsShortWhileAShowIsPlayedEndsItInWords) {
  ASSERT_EQ(Orbel({"demo", show_}).status, 0);
  for (rlim_t bytes = 140 * kMegabyte; bytes < 260 * kMegabyte; bytes += 12 * kMegabyte) {
    SCOPED_TRACE(bytes);
    const Ended play =
        RunWithin(bytes, {"play", show_, "--output", "file", "--device", Out(), "--caesura-silence", "0"});
    EXPECT_THAT(play.messages, Not(HasSubstr("terminate called")));
    EXPECT_THAT(play.status, AnyOf(0, 1)) << play.messages;
    if (play.status != 0) ++refusals_;
  }
  EXPECT_GT(refusals_, 0);
}

// Ten hours, none of them on the disk: what they take is known from their header.
TEST_F(AddressSpace, ThatASongDoesNotFitIntoIsToldBeforeAnyOfItIsTaken) {
  constexpr std::uintmax_t kBytes = 10ULL * 3600 * ShowFiles::kRate * sizeof(float);
  files_.AddSong("1", "Waltz", 1);
  const std::filesystem::path audio = files_.At("data/1 Waltz.obd");
  std::string header = host_tests::ReadText(audio).substr(0, 44);
  for (std::size_t i = 0; i < 4; ++i) header[40 + i] = static_cast<char>(kBytes >> (8 * i) & 0xFF);
  for (std::size_t i = 0; i < 4; ++i) header[4 + i] = static_cast<char>((kBytes + 36) >> (8 * i) & 0xFF);
  files_.Write("data/1 Waltz.obd", header);
  std::filesystem::resize_file(audio, header.size() + kBytes);
  const Ended check = RunWithin(1000 * kMegabyte, {"check", files_.Show()});
  EXPECT_EQ(check.status, 5);
  EXPECT_THAT(check.out, HasSubstr("decoding needs 1099 MiB of memory and only "));
  EXPECT_LT(check.peakBytes, 200LL * 1000 * 1000);
}

}  // namespace
}  // namespace faults
