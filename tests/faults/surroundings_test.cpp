// What happens around the program: clocks that jump, strange terminals, other places and a
// second program on the same show.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"
#include "tests/host/terminal_program.h"
#include "tests/support/limit.h"
#include "tests/support/wait_until.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::OrbelInATerminal;
using host_tests::ReadText;
using host_tests::RunningOrbel;
using host_tests::ShowFiles;
using test_support::Limit;
using testing::HasSubstr;

class Surroundings : public testing::Test {
 protected:
  Surroundings() {
    files_.AddSong("1", "Waltz", 1, "[[caesura]]\nat = \"1.2\"\n[[tempo]]\nat = \"1\"\nscale = 1.0\n");
    files_.AddSong("2", "Polka", 1);
  }
  // What reads and writes numbers: 1,000 and more, and some with fractions.
  std::vector<std::vector<std::string>> NumbersIn() {
    files_.AddSong("3", "Galop", 40, "[[tempo]]\nat = \"2\"\nscale = 0.95\n");
    std::ofstream(files_.Beside("script")) << "time 2.5 tempo 1.25\ntime 30.75 stop\n";
    const std::string show = files_.Show();
    return {{"info", show, "--json"},
            {"info", show},
            {"where", show, "3", "35.2", "tick:60001", "time:0:31.25", "--json"},
            {"where", show, "3", "35.2", "sample:250001"},
            {"check", show},
            {"render", show, "--song", "3", "-o", files_.Beside("out.wav"), "--trace",
             files_.Beside("trace.csv"), "--script", files_.Beside("script")}};
  }
  // Made here, because few machines have it.
  void MakeGermanLocale() const {
    std::filesystem::create_directory(files_.Beside("locales"));
    const std::string command = "localedef -i de_DE -f UTF-8 '" + files_.Beside("locales/de_DE.UTF-8") + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
  }

  ShowFiles files_;
};

// Whether the standard output of a process is that file already.
bool WritesTo(const std::string& path, pid_t process) {
  std::error_code notYet;
  return std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/fd/1", notYet) == path;
}

TEST_F(Surroundings, AClockThatJumpsByHoursChangesNothing) {
  const auto jumping = Refusing({{"ORBEL_JUMPY_CLOCK", "1"}});
  const auto begin = std::chrono::steady_clock::now();
  const Ended run = Orbel({"play", files_.Show(), "--caesura-silence", "0.3"});
  const auto took = std::chrono::steady_clock::now() - begin;
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr("2 Polka   bar "));
  EXPECT_GE(took, std::chrono::milliseconds(2000)) << "two songs of a second each";
  EXPECT_LT(took, std::chrono::minutes(5));
}

TEST_F(Surroundings, AFileSizeLimitEndsNothingBySignal) {
  const Limit limit(RLIMIT_FSIZE, 4096);
  const Ended run = Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  EXPECT_EQ(run.status, 1) << "and not by SIGXFSZ";
}

// Into a pipe whose reader has gone, as in `orbel info SHOW | head -1`.
TEST_F(Surroundings, AReaderThatHasGoneEndsNothingBySignal) {
  const std::string pipe = files_.Beside("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const char* verb : {"info", "check", "where"}) {
    // Full, so that the program cannot have written everything when the reader goes.
    const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    const int full = ::open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(full, 0);
    const std::string block(65'536, ' ');
    while (::write(full, block.data(), block.size()) > 0) {
    }
    std::vector<std::string> arguments{verb, files_.Show()};
    if (verb == std::string("where")) arguments.insert(arguments.end(), {"1", "1.2"});
    RunningOrbel running(arguments, pipe);
    EXPECT_TRUE(test_support::WaitUntil([&] { return WritesTo(pipe, running.GetProcess()); },
                                        std::chrono::minutes(1)));
    ::close(full);
    ::close(reader);
    const Ended run = running.WaitForEnd();
    EXPECT_GE(run.status, 0) << verb << ": a signal ended it";
    EXPECT_THAT(run.status, testing::AnyOf(0, 1)) << verb;
  }
}

// Nothing is looked up in a table of terminals: every terminal is written to in the same way, with the few
// sequences that nearly all of them know.
TEST_F(Surroundings, ATerminalOfNoKnownKindIsTakenForAnyOther) {
  const Environment strange(Environment::Variables{{"TERM", "no-such-terminal"}});
  OrbelInATerminal orbel({"play", files_.Show(), "--output", "null"});
  EXPECT_TRUE(orbel.Shows("space go   p play/pause"));
  EXPECT_TRUE(orbel.Shows("\r\x1b[K1 Waltz   bar 1.1"));
  orbel.Type("q");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
  EXPECT_TRUE(orbel.IsAsBefore());
}

TEST_F(Surroundings, LocalesReadAndWriteNumbersAlike) {
  for (const auto& arguments : NumbersIn()) {
    const Ended plain = Orbel(arguments);
    EXPECT_EQ(plain.status, 0) << plain.messages;
    for (const char* name : {"C", "C.UTF-8", "no_SUCH"}) {
      const Environment elsewhere(Environment::Variables{{"LC_ALL", name}, {"LANG", name}});
      const Ended run = Orbel(arguments);
      EXPECT_EQ(run.status, plain.status) << name;
      EXPECT_EQ(run.out, plain.out) << name;
      EXPECT_EQ(run.messages, plain.messages) << name;
    }
  }
}

// In a process in which numbers have a comma, a host's with windows, say.
TEST_F(Surroundings, GermanNumbersAreReadAndWrittenAlike) {
  MakeGermanLocale();
  for (const auto& arguments : NumbersIn()) {
    const Ended plain = Orbel(arguments);
    const std::string plainTrace = ReadText(files_.Beside("trace.csv"));
    const std::string plainSamples = ReadText(files_.Beside("out.wav"));
    const auto german = Refusing({{"LOCPATH", files_.Beside("locales")},
                                  {"LC_ALL", "de_DE.UTF-8"},
                                  {"ORBEL_USE_LOCALE", files_.Beside("proof")}});
    const Ended run = Orbel(arguments);
    ASSERT_EQ(ReadText(files_.Beside("proof")), "1,5") << "so that something is tested";
    EXPECT_EQ(run.status, 0) << run.messages;
    EXPECT_EQ(run.out, plain.out);
    EXPECT_EQ(run.messages, plain.messages);
    EXPECT_EQ(ReadText(files_.Beside("trace.csv")), plainTrace);
    EXPECT_TRUE(ReadText(files_.Beside("out.wav")) == plainSamples);
  }
}

TEST_F(Surroundings, TheSameShowPlayedTwiceDisturbsNobody) {
  RunningOrbel playing({"play", files_.Show()});
  ASSERT_TRUE(playing.Says("1 Waltz   bar "));
  const Ended render = Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  EXPECT_EQ(render.status, 0) << render.messages;
  const Ended second = Orbel({"play", files_.Show()});
  EXPECT_EQ(second.status, 0) << second.messages;
  EXPECT_EQ(playing.WaitForEnd().status, 0);
}

// Every file of a folder: what is in it and when it was last changed.
std::map<std::string, std::pair<std::string, std::filesystem::file_time_type>> Everything(
    const std::string& folder) {
  std::map<std::string, std::pair<std::string, std::filesystem::file_time_type>> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    files[entry.path().string()] = {entry.is_regular_file() ? ReadText(entry.path().string()) : "folder",
                                    entry.last_write_time()};
  }
  return files;
}

TEST_F(Surroundings, TwoThatHaveTheSameShowOpenBothWriteEverySampleAndNothingIntoIt) {
  files_.AddSong("3", "Galop", 40);
  const auto render = [&](const std::string& name) {
    return std::vector<std::string>{"render", files_.Show(), "--song", "3", "-o", files_.Beside(name)};
  };
  ASSERT_EQ(Orbel(render("alone.wav")).status, 0);
  const std::string expected = ReadText(files_.Beside("alone.wav"));
  const auto before = Everything(files_.Show());
  const auto holding = Refusing({{"ORBEL_HOLD_READ", "3 Galop.obd:100000"},
                                 {"ORBEL_HOLD_UNTIL", files_.Beside("gate")},
                                 {"ORBEL_COUNT_HELD", files_.Beside("held")}});
  RunningOrbel first(render("first.wav"));
  RunningOrbel second(render("second.wav"));
  EXPECT_TRUE(test_support::WaitUntil([&] { return ReadText(files_.Beside("held")).size() >= 2; },
                                      std::chrono::minutes(1)))
      << "both are in the middle of the same file";
  std::ofstream(files_.Beside("gate")) << "go";
  for (RunningOrbel* running : {&first, &second}) {
    const Ended run = running->WaitForEnd();
    EXPECT_EQ(run.status, 0) << run.messages;
  }
  EXPECT_TRUE(ReadText(files_.Beside("first.wav")) == expected);
  EXPECT_TRUE(ReadText(files_.Beside("second.wav")) == expected);
  EXPECT_TRUE(Everything(files_.Show()) == before);
}

const char* const kIsBeingWritten =
    ": cannot be written: it is being written by another program; wait until that has ended, or choose "
    "another name.\n";

// The first one is held in the middle of its trace until the second one has come.
TEST_F(Surroundings, OfTwoRendersIntoOneFileTheSecondIsToldAndTheFirstIsWhole) {
  files_.AddSong("3", "Galop", 40);
  const std::string out = files_.Beside("out.wav");
  const std::string pipe = files_.Beside("pipe");
  ASSERT_EQ(Orbel({"render", files_.Show(), "--song", "3", "-o", out}).status, 0);
  const std::string expected = ReadText(out);
  std::filesystem::remove(out);
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(reader, 0);
  ASSERT_GE(::fcntl(reader, F_SETPIPE_SZ, 4096), 4096);
  RunningOrbel first({"render", files_.Show(), "--song", "3", "-o", out, "--trace", pipe});
  const auto isHeld = [&] {
    int count = 0;
    return ::ioctl(reader, FIONREAD, &count) == 0 && count > 3000;
  };
  ASSERT_TRUE(test_support::WaitUntil(isHeld, std::chrono::minutes(1)));
  const Ended second = Orbel({"render", files_.Show(), "--song", "2", "-o", out});
  EXPECT_EQ(second.status, 1);
  EXPECT_EQ(second.messages, "orbel: " + out + kIsBeingWritten);
  char rows[4096];
  EXPECT_TRUE(test_support::WaitUntil([&] { return ::read(reader, rows, sizeof rows) == 0; },
                                      std::chrono::minutes(1)));
  const Ended run = first.WaitForEnd();
  ::close(reader);
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_TRUE(ReadText(out) == expected);
  EXPECT_FALSE(std::filesystem::exists(out + ".part"));
}

TEST_F(Surroundings, TwoRendersOfTwoSongsIntoOneFileLeaveOneOfThemWhole) {
  files_.AddSong("3", "Galop", 4);
  const auto render = [&](const std::string& song, const std::string& name) {
    return std::vector<std::string>{"render", files_.Show(), "--song", song, "-o", files_.Beside(name)};
  };
  ASSERT_EQ(Orbel(render("1", "1.wav")).status, 0);
  ASSERT_EQ(Orbel(render("3", "3.wav")).status, 0);
  const std::string waltz = ReadText(files_.Beside("1.wav"));
  const std::string galop = ReadText(files_.Beside("3.wav"));
  ASSERT_FALSE(waltz == galop);
  for (int attempt = 0; attempt < 8; ++attempt) {
    RunningOrbel first(render("1", "out.wav"));
    RunningOrbel second(render("3", "out.wav"));
    const Ended one = first.WaitForEnd();
    const Ended two = second.WaitForEnd();
    EXPECT_TRUE(one.status == 0 || two.status == 0) << one.messages << two.messages;
    const std::string left = ReadText(files_.Beside("out.wav"));
    EXPECT_TRUE((one.status == 0 && left == waltz) || (two.status == 0 && left == galop));
  }
}

TEST_F(Surroundings, ARecordingIsNotSpoiltByARenderOfItsName) {
  files_.AddSong("3", "Galop", 2, "[[vamp]]\nfrom = \"1.2\"\nto = \"1.3\"\n");
  const std::string out = files_.Beside("live.wav");
  RunningOrbel playing({"play", files_.Show(), "--song", "3", "--output", "file", "--device", out,
                        "--vamp-passes", "1000000"});
  ASSERT_TRUE(test_support::WaitUntil(
      [&] {
        std::error_code none;
        const auto size = std::filesystem::file_size(out + ".part", none);
        return !none && size > 1000;
      },
      std::chrono::minutes(1)));
  const Ended render = Orbel({"render", files_.Show(), "--song", "2", "-o", out});
  EXPECT_EQ(render.status, 1);
  EXPECT_EQ(render.messages, "orbel: " + out + kIsBeingWritten);
  playing.Signal(SIGTERM);
  const Ended played = playing.WaitForEnd();
  EXPECT_EQ(played.status, 0) << played.messages;
  EXPECT_FALSE(host_tests::ReadFloatWav(out).empty());
}

// The other way round.
TEST_F(Surroundings, APerformanceIntoAFileThatIsBeingWrittenIsRefused) {
  const std::string out = files_.Beside("live.wav");
  std::ofstream(out) << "before";
  const std::vector<std::string> play{"play", files_.Show(), "--output", "file", "--device", out};
  const int held = ::open((out + ".part").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(::flock(held, LOCK_EX), 0);
  const Ended run = Orbel(play);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr(out + kIsBeingWritten));
  EXPECT_EQ(ReadText(out), "before");
  ::close(held);
  EXPECT_EQ(Orbel(play).status, 0) << "what a program has left that is gone";
}

}  // namespace
}  // namespace faults
