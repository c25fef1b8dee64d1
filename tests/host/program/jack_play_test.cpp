// The program against a real JACK server without hardware: what arrives at a recorder's port, frame for
// frame.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <thread>
#include <utility>

#include "tests/host/run_orbel.h"
#include "tests/host/show_files.h"
#include "tests/host/terminal_program.h"
#include "tests/support/jack_recorder.h"
#include "tests/support/jack_server.h"

namespace host_tests {
namespace {

using test_support::JackRecorder;
using test_support::JackServer;
using testing::HasSubstr;

constexpr unsigned kRate = 48'000;
constexpr long long kSecondSong = 4'000'000;  // what its frames are numbered from

template <typename Condition>
bool Await(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

// The second channel holds what the first does, with the other sign.
std::vector<float> InStereo(const std::vector<float>& first) {
  std::vector<float> both;
  for (const float sample : first) both.insert(both.end(), {sample, -sample});
  return both;
}

// A bar lasts a second. The first song: a vamp on bar 2, a repeat of bar 4, bar 6 cut out, a caesura before
// bar 8, and on into the second without a gap.
void WriteShow(ShowFiles* files) {
  files->AddSong("1", "Waltz", 8,
                 "attacca = true\n[[vamp]]\nfrom = \"2\"\nto = \"3\"\n[[repeat]]\nfrom = \"4\"\nto = \"5\"\n"
                 "[[cut]]\nfrom = \"6\"\nto = \"7\"\n[[caesura]]\nat = \"8\"\n");
  files->AddSong("2", "Polka", 2);
  std::vector<float> first = FramesFromZero(8LL * kRate);
  std::vector<float> second;
  for (long long frame = 0; frame < 2LL * kRate; ++frame) second.push_back(FrameValue(kSecondSong + frame));
  WriteWav(files->At("data/1 Waltz.obd"), InStereo(first), kRate, 2);
  WriteWav(files->At("data/2 Polka.obd"), InStereo(second), kRate, 2);
}

long long Bar(long long number) {
  return (number - 1) * kRate;
}

// The number of a recorded frame; -1 is silence, -2 something that no song holds.
long long NumberOf(float sample) {
  if (sample == 0.0F) return -1;
  const double number = static_cast<double>(sample) * 16777216.0 - 1.0;
  return number == std::floor(number) && number >= 0.0 ? static_cast<long long>(number) : -2;
}

// Where the numbers do not go on by one: "95999 > 48000", a silence as "...".
std::vector<std::string> Breaks(const std::vector<float>& frames) {
  std::vector<std::string> breaks;
  long long before = -3;
  bool silence = false;
  for (const float sample : frames) {
    const long long number = NumberOf(sample);
    if (number == -1) {
      silence = true;
      continue;
    }
    if (silence || number != before + 1) {
      breaks.push_back(std::to_string(before) + (silence ? " ... " : " > ") + std::to_string(number));
    }
    before = number;
    silence = false;
  }
  breaks.push_back(std::to_string(before) + " end");
  return breaks;
}

std::string Jump(long long from, long long to) {
  return std::to_string(from - 1) + " > " + std::to_string(to);
}

class JackPlay : public testing::TestWithParam<unsigned> {};

TEST_P(JackPlay, EveryFrameArrivesAcrossJumpsPausesSeeksAndSongs) {
  ShowFiles files;
  WriteShow(&files);
  JackServer server({.rateHz = kRate, .periodFrames = GetParam(), .outputs = 2});
  JackRecorder recorder(server.GetName(), 100'000'000, 2);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "jack", "--device", server.GetName(), "--connect",
                          "recorder:in_.", "--crossfade", "0", "--fade", "0"});
  ASSERT_TRUE(orbel.Shows("stopped"));
  for (const unsigned port : {0U, 1U}) {
    ASSERT_TRUE(Await([&] { return !recorder.GetSources(port).empty(); }));
  }
  recorder.SetFreewheel(true);

  orbel.Type("p");
  // Into the vamp, and round it.
  ASSERT_TRUE(Await([&] { return recorder.GetCount() > 5 * kRate; }));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("paused"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("playing"));
  const std::size_t resumed = recorder.GetCount();
  ASSERT_TRUE(Await([&] { return recorder.GetCount() > resumed + 3 * kRate; }));
  orbel.Type("\x1b[D");  // left: to the start of the vamp, or of the song
  const std::size_t sought = recorder.GetCount();
  ASSERT_TRUE(Await([&] { return recorder.GetCount() > sought + 5 * kRate; }));
  orbel.Type(" ");
  ASSERT_TRUE(orbel.Shows("waiting at a caesura"));
  orbel.Type(" ");
  ASSERT_TRUE(orbel.Shows("ended"));
  recorder.SetFreewheel(false);
  orbel.Type("q");
  EXPECT_EQ(orbel.WaitForEnd(), 0);

  const std::vector<float> heard = recorder.GetFrames();
  std::vector<float> opposite = recorder.GetFrames(1);
  for (float& sample : opposite) sample = -sample;
  EXPECT_TRUE(opposite == heard) << "each channel on its port, and both at the same time";

  std::vector<std::string> breaks = Breaks(heard);
  const std::string vamp = Jump(Bar(3), Bar(2));
  // In this order; of the vamp as many passes as there was time for.
  std::vector<std::string> others;
  long long vamps = 0;
  for (const std::string& each : breaks) {
    if (each == vamp) {
      ++vamps;
    } else {
      others.push_back(each);
    }
  }
  EXPECT_GE(vamps, 3) << "the vamp goes round until it is left";
  ASSERT_EQ(others.size(), 8U) << testing::PrintToString(others);
  EXPECT_EQ(others[0], "-3 > 0") << "from the first frame";
  long long paused = -1;
  long long next = -1;
  ASSERT_EQ(std::sscanf(others[1].c_str(), "%lld ... %lld", &paused, &next), 2) << others[1];
  EXPECT_TRUE(next == paused + 1 || (paused == Bar(3) - 1 && next == Bar(2))) << "pause: " << others[1];
  long long left = -1;
  long long target = -1;
  ASSERT_EQ(std::sscanf(others[2].c_str(), "%lld > %lld", &left, &target), 2) << others[2];
  EXPECT_TRUE(target == 0 || target == Bar(2)) << "seek: " << others[2];
  EXPECT_EQ(others[3], Jump(Bar(5), Bar(4))) << "the repeat, once";
  EXPECT_EQ(others[4], Jump(Bar(6), Bar(7))) << "the cut";
  EXPECT_EQ(others[5], std::to_string(Bar(8) - 1) + " ... " + std::to_string(Bar(8))) << "the caesura";
  EXPECT_EQ(others[6], Jump(Bar(9), kSecondSong)) << "the attacca, without a gap";
  EXPECT_EQ(others[7], std::to_string(kSecondSong + 2 * kRate - 1) + " end") << "to the last frame";
}

INSTANTIATE_TEST_SUITE_P(Periods, JackPlay, testing::Values(64U, 128U, 256U, 1024U));

// How late this machine wakes a thread that sleeps a millisecond at a time: what any program has to live
// with.
class WakeUps {
 public:
  WakeUps() {
    thread_ = std::thread([this] {
      while (!ends_) {
        const auto due = std::chrono::steady_clock::now() + std::chrono::milliseconds(1);
        std::this_thread::sleep_until(due);
        const std::chrono::duration<double, std::milli> late = std::chrono::steady_clock::now() - due;
        late_.push_back(late.count());
      }
    });
  }
  ~WakeUps() { End(); }
  WakeUps(const WakeUps&) = delete;
  WakeUps& operator=(const WakeUps&) = delete;

  // Milliseconds: of the median, of the 99.9th percentile, the longest.
  std::array<double, 3> End() {
    ends_ = true;
    if (thread_.joinable()) thread_.join();
    std::sort(late_.begin(), late_.end());
    const std::size_t count = late_.size();
    if (count == 0) return {};
    return {late_[count / 2], late_[count * 999 / 1000], late_.back()};
  }

 private:
  std::atomic<bool> ends_{false};
  std::vector<double> late_;  // the thread's while it runs
  std::thread thread_;
};

std::string FieldOf(const std::string& json, const std::string& key) {
  const std::size_t at = json.find("\"" + key + "\": ");
  if (at == std::string::npos) return "";
  const std::size_t begin = at + key.size() + 4;
  return json.substr(begin, json.find_first_of(",\n", begin) - begin);
}

// In real time, on a machine that may stand still for milliseconds: what arrives is from the song, and what
// was lost on the way is reported, beside the machine's own lateness.
TEST(JackInRealTime, WhatArrivesIsTheSongAndWhatIsLostIsReported) {
  const char* const wanted = std::getenv("ORBEL_LIVE_SECONDS");
  const unsigned seconds = wanted != nullptr ? static_cast<unsigned>(std::atoi(wanted)) : 3;
  const long long total = static_cast<long long>(seconds) * kRate;
  ShowFiles files;
  files.AddSong("1", "Waltz", seconds);
  WriteWav(files.At("data/1 Waltz.obd"), FramesFromZero(total), kRate);
  const JackServer server({.rateHz = kRate, .periodFrames = 256, .outputs = 2});
  const JackRecorder recorder(server.GetName(), static_cast<std::size_t>(2 * total));
  WakeUps wakeUps;
  const Ended run = Orbel({"play", files.Show(), "--output", "jack", "--device", server.GetName(),
                           "--connect", "recorder:in_1", "--crossfade", "0", "--fade", "0", "--json"});
  const std::array<double, 3> late = wakeUps.End();
  ASSERT_EQ(run.status, 0) << run.messages;
  long long arrived = 0;
  long long last = -1;
  int holes = 0;
  for (const float sample : recorder.GetFrames()) {
    const long long number = NumberOf(sample);
    if (number == -1) continue;
    ASSERT_NE(number, -2) << "nothing that the song does not hold";
    holes += number != last + 1 ? 1 : 0;
    last = number;
    ++arrived;
  }
  EXPECT_GT(arrived, 0);
  std::printf(
      "%lld of %lld frames arrived, with %d breaks; %s xruns, %s frames of underrun; this machine woke up\n"
      "%.2f ms late in the middle, %.2f in the worst thousandth, %.2f at most\n",
      arrived, total, holes, FieldOf(run.out, "xruns").c_str(), FieldOf(run.out, "underrunFrames").c_str(),
      late[0], late[1], late[2]);
}

constexpr double kVampSeconds = 3.0;

// The pass that the program shows from now on. What it has shown before may be of the pass before.
long long PassShown(OrbelInATerminal* orbel) {
  orbel->PassOver();
  if (!orbel->ShowsLike(" vamp back to 2\\.1 \\(pass [0-9]+\\)")) return -1;
  const std::string before = " (pass ";
  const std::string& screen = orbel->GetScreen();
  return std::atoll(screen.c_str() + screen.rfind(before) + before.size());
}

// Where in the show what a recorder hears is, less what the clock says, in seconds: the same as long as
// nothing is lost. Every pass of a vamp on the bars 2 to 4 counts.
double PlaceInTime(OrbelInATerminal* orbel, const JackRecorder& recorder) {
  // Of many periods the one that came least late: the machine holds up all who record.
  double least = -1e9;
  JackRecorder::Newest newest;
  long long number = -1;
  const std::size_t end = recorder.GetCount() + 10'000;
  const bool isThere = Await([&] {
    newest = recorder.GetNewest();
    if (newest.count < 2'000) return false;
    number = NumberOf(recorder.GetFrames()[newest.count - 1]);
    if (number < 0) return false;
    const double here = static_cast<double>(number) / kRate - newest.seconds;
    least = least < -1e8 ? here : std::max(least, least + std::remainder(here - least, kVampSeconds));
    // In the middle, far from where a pass ends: the program shows the one that is heard.
    return newest.count > end && number > Bar(3) && number < Bar(3) + kRate / 2;
  });
  if (!isThere) return -1e9;
  const double passes = kVampSeconds * static_cast<double>(PassShown(orbel) - 1);
  const double here = static_cast<double>(number) / kRate + passes - newest.seconds;
  return here + std::remainder(least - here, kVampSeconds);
}

TEST(JackLoss, BehindEveryRestartTheShowIsWhereTheStageIs) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 8,
                "[[vamp]]\nfrom = \"2\"\nto = \"5\"\n[[cut]]\nfrom = \"6\"\nto = \"7\"\n[[caesura]]\nat = "
                "\"8\"\n");
  WriteWav(files.At("data/1 Waltz.obd"), FramesFromZero(8LL * kRate), kRate);
  const std::string name = JackServer::NewName();
  const JackServer::Shape shape{.rateHz = kRate, .periodFrames = 256, .outputs = 2};
  auto server = std::make_unique<JackServer>(shape, name);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "jack", "--device", name, "--connect",
                          "recorder:in_1", "--crossfade", "0", "--fade", "0"});
  ASSERT_TRUE(orbel.Shows("stopped"));
  // A server that is held up plays on later than the clock, so what is lost is counted across each outage
  // alone.
  double before = 0.0;
  double total = 0.0;
  {
    JackRecorder recorder(name, 50'000'000);
    orbel.Type("p");
    ASSERT_TRUE(orbel.Shows("(pass 2)"));
    before = PlaceInTime(&orbel, recorder);
  }
  const char* const rounds = std::getenv("ORBEL_RESTARTS");
  const int count = rounds != nullptr ? std::atoi(rounds) : 3;
  for (int round = 0; round < count; ++round) {
    // Killed, ended, and hung, which nobody tells.
    if (round % 3 == 2) server->Signal(SIGSTOP);
    if (round % 3 != 2) server->End(round % 3 == 0 ? SIGKILL : SIGTERM);
    ASSERT_TRUE(orbel.Shows("no audio: null device")) << "round " << round;
    ASSERT_TRUE(orbel.Shows("recovering")) << "round " << round << orbel.GetScreen();
    if (round % 3 == 2) {
      server->Signal(SIGCONT);
    } else {
      server = std::make_unique<JackServer>(shape, name);
    }
    JackRecorder recorder(name, 50'000'000);
    ASSERT_TRUE(orbel.Shows("sound again")) << "round " << round;
    // The same bar of the same pass.
    const double off = PlaceInTime(&orbel, recorder) - before;
    EXPECT_LT(std::fabs(off), 0.25) << "round " << round;
    total += off;
    std::printf("round %d: off by %.1f ms, by %.1f ms in all\n", round, off * 1000.0, total * 1000.0);
    EXPECT_THAT(orbel.GetScreen(), HasSubstr("playing"));
    before = PlaceInTime(&orbel, recorder);
  }
  orbel.Type(" ");
  ASSERT_TRUE(orbel.Shows("waiting at a caesura")) << "behind vamp and cut";
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST(JackLoss, WhileTheServerHangsTheKeysAreObeyedToTheLast) {
  ShowFiles files;
  WriteShow(&files);
  JackServer server;
  OrbelInATerminal orbel({"play", files.Show(), "--output", "jack", "--device", server.GetName()});
  ASSERT_TRUE(orbel.Shows("stopped"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("playing"));
  server.Signal(SIGSTOP);
  ASSERT_TRUE(orbel.Shows("no audio: null device"));
  ASSERT_TRUE(orbel.Shows("recovering"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("paused"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("recovering"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 6) << "with the client still open, which nobody can close";
}

TEST(JackLoss, AServerThatComesBackAtAnotherRateAndPeriodPlaysAtTheSamePitchWhereTheShowIs) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  WriteWav(files.At("data/1 Waltz.obd"), FramesFromZero(300LL * kRate), kRate);
  const std::string name = JackServer::NewName();
  const auto number = [](float sample) { return static_cast<double>(sample) * 16777216.0 - 1.0; };
  auto server = std::make_unique<JackServer>(JackServer::Shape{.rateHz = kRate, .periodFrames = 256}, name);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "jack", "--device", name, "--connect",
                          "recorder:in_1", "--crossfade", "0", "--fade", "0"});
  ASSERT_TRUE(orbel.Shows("stopped"));
  // Of the show, less what the clock says: of many periods the one that came least late.
  const auto start = [&](const JackRecorder& recorder) {
    double most = -1e9;
    const std::size_t end = recorder.GetCount() + kRate / 4;
    EXPECT_TRUE(Await([&] {
      const JackRecorder::Newest newest = recorder.GetNewest();
      const float sample = recorder.GetFrames()[newest.count - 1];
      if (sample != 0.0F) most = std::max(most, number(sample) / kRate - newest.seconds);
      return newest.count > end;
    }));
    return most;
  };
  double before = 0.0;
  {
    const JackRecorder recorder(name, 10'000'000);
    orbel.Type("p");
    ASSERT_TRUE(Await([&] { return recorder.GetCount() > kRate; }));
    before = start(recorder);
  }
  constexpr unsigned kOtherRate = 44'100;
  server->End(SIGKILL);
  ASSERT_TRUE(orbel.Shows("recovering"));
  server = std::make_unique<JackServer>(JackServer::Shape{.rateHz = kOtherRate, .periodFrames = 1024}, name);
  const JackRecorder recorder(name, 10'000'000);
  ASSERT_TRUE(orbel.Shows("sound again: JACK server \"" + name +
                          "\", 44100 Hz, 1024 frames a period, converted from 48000 Hz"))
      << orbel.GetScreen();
  ASSERT_TRUE(Await([&] { return recorder.GetCount() > kOtherRate; }));
  EXPECT_LT(std::fabs(start(recorder) - before), 0.25);
  const std::vector<float> frames = recorder.GetFrames();
  // The numbers of the frames rise by one a frame, at whatever rate: a second later by a second of them.
  std::vector<double> rises;
  constexpr std::size_t kStep = 441;
  for (std::size_t i = kOtherRate / 4; i + kStep < frames.size(); i += kStep) {
    if (std::find(frames.begin() + static_cast<long>(i), frames.begin() + static_cast<long>(i + kStep),
                  0.0F) != frames.begin() + static_cast<long>(i + kStep)) {
      continue;  // a dropout on a busy machine
    }
    rises.push_back((number(frames[i + kStep]) - number(frames[i])) / kStep);
  }
  ASSERT_FALSE(rises.empty());
  std::sort(rises.begin(), rises.end());
  EXPECT_NEAR(rises[rises.size() / 2], 48'000.0 / 44'100.0, 0.001);
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

// Stands still while it lives: one thread of another process, by its name.
class StoppedThread {
 public:
  StoppedThread(pid_t process, const std::string& name) {
    const std::string tasks = "/proc/" + std::to_string(process) + "/task";
    for (const auto& task : std::filesystem::directory_iterator(tasks)) {
      if (ReadText((task.path() / "comm").string()) == name + "\n")
        thread_ = std::stoi(task.path().filename());
    }
    if (thread_ == 0 || ::ptrace(PTRACE_SEIZE, thread_, nullptr, nullptr) != 0) {
      thread_ = 0;
      return;
    }
    ::ptrace(PTRACE_INTERRUPT, thread_, nullptr, nullptr);
    ::waitpid(thread_, nullptr, __WALL);
  }
  ~StoppedThread() {
    if (thread_ != 0) ::ptrace(PTRACE_DETACH, thread_, nullptr, nullptr);
  }
  StoppedThread(const StoppedThread&) = delete;
  StoppedThread& operator=(const StoppedThread&) = delete;
  bool Stands() const { return thread_ != 0; }

 private:
  pid_t thread_ = 0;
};

TEST(JackStarved, WhatIsNotRenderedInTimeIsSilenceThatIsCountedAndNothingIsSkipped) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  WriteWav(files.At("data/1 Waltz.obd"), FramesFromZero(300LL * kRate), kRate);
  const JackServer server({.rateHz = kRate, .periodFrames = 256, .outputs = 2});
  const JackRecorder recorder(server.GetName(), 10'000'000);
  RunningOrbel orbel({"play", files.Show(), "--output", "jack", "--device", server.GetName(), "--connect",
                      "recorder:in_1", "--crossfade", "0", "--fade", "0", "--json"});
  ASSERT_TRUE(Await([&] { return recorder.GetCount() > kRate / 2; }));
  {
    const StoppedThread worker(orbel.GetProcess(), "AudioRender");
    ASSERT_TRUE(worker.Stands()) << "the system lets nobody stop a thread of a program that he has started";
    ASSERT_TRUE(Await([&] { return recorder.GetFrames().back() == 0.0F; })) << "the ring has run dry";
    const double dry = recorder.GetNewest().seconds;
    ASSERT_TRUE(Await([&] { return recorder.GetNewest().seconds > dry + 0.1; }));
  }
  const std::size_t before = recorder.GetCount();
  ASSERT_TRUE(Await([&] { return recorder.GetCount() > before + kRate / 2; }));
  const std::vector<float> frames = recorder.GetFrames();
  orbel.Signal(SIGINT);
  ASSERT_TRUE(orbel.Says("once more ends it"));
  orbel.Signal(SIGINT);
  const Ended run = orbel.WaitForEnd();
  const long long underruns = std::atoll(FieldOf(run.out, "underrunFrames").c_str());
  const std::string xruns = FieldOf(run.out, "xruns");
  std::printf("%lld frames of silence arrived, %lld frames of underrun; %s xruns\n", recorder.GetSilence(),
              underruns, xruns.c_str());
  EXPECT_GT(underruns, 0);
  int silences = 0;
  long long last = -1;
  long long lost = 0;  // frames of the song that did not arrive
  bool silence = false;
  for (const float sample : frames) {
    const long long number = NumberOf(sample);
    silence = silence || number == -1;
    if (number == -1) continue;
    ASSERT_GT(number, last) << "nothing comes twice";
    lost += number - last - 1;
    silences += silence ? 1 : 0;
    silence = false;
    last = number;
  }
  EXPECT_GT(silences, 0);
  // What arrives as silence was missing. A server that was held up itself takes frames, and silences, that
  // nobody records; every such time it counts.
  EXPECT_LE(recorder.GetSilence(), underruns);
  if (xruns == "0") {
    EXPECT_EQ(lost, 0);
    EXPECT_EQ(recorder.GetSilence(), underruns);
  }
  // Bars of a second: "2.3" is in the second second. It has played on until it was ended.
  const std::string position = FieldOf(run.out, "position");
  const double shown = std::floor(std::atof(position.c_str() + 1) - 1.0);
  const auto playedOn = static_cast<double>(recorder.GetCount() - frames.size());
  EXPECT_GE(shown, static_cast<double>(last) / kRate - 1.5) << position;
  EXPECT_LE(shown, (static_cast<double>(last) + playedOn) / kRate + 1.5) << position;
}

// Real-time priority of one thread of another process, by its name; 0: an ordinary one.
int PriorityOf(pid_t process, const std::string& name) {
  const std::string tasks = "/proc/" + std::to_string(process) + "/task";
  for (const auto& task : std::filesystem::directory_iterator(tasks)) {
    if (ReadText((task.path() / "comm").string()) != name + "\n") continue;
    const pid_t thread = std::stoi(task.path().filename());
    sched_param parameters{};
    if ((::sched_getscheduler(thread) & ~SCHED_RESET_ON_FORK) != SCHED_FIFO) return 0;
    return ::sched_getparam(thread, &parameters) == 0 ? parameters.sched_priority : -1;
  }
  return -1;
}

bool MayHaveRealTime() {
  sched_param parameters{};
  parameters.sched_priority = 84;
  const bool may = ::sched_setscheduler(0, SCHED_FIFO | SCHED_RESET_ON_FORK, &parameters) == 0;
  parameters.sched_priority = 0;
  ::sched_setscheduler(0, SCHED_OTHER, &parameters);
  return may;
}

// JACK's clients stand five below their server.
TEST(JackLoss, TheRenderThreadStandsJustBelowTheThreadThatItFeeds) {
  const bool realTime = MayHaveRealTime();
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  const std::string name = JackServer::NewName();
  auto server = std::make_unique<JackServer>(JackServer::Shape{.priority = 10}, name);
  RunningOrbel orbel({"play", files.Show(), "--output", "jack", "--device", name});
  ASSERT_TRUE(orbel.Says("Playing to JACK server"));
  const auto has = [&](int priority) {
    const int expected = realTime ? priority : 0;
    return Await([&] { return PriorityOf(orbel.GetProcess(), "AudioRender") == expected; });
  };
  EXPECT_TRUE(has(4)) << PriorityOf(orbel.GetProcess(), "AudioRender");
  server->End(SIGTERM);
  EXPECT_TRUE(has(60)) << "there is only a clock";
  server = std::make_unique<JackServer>(JackServer::Shape{.rateHz = 44'100, .priority = 70}, name);
  EXPECT_TRUE(has(64));
  EXPECT_TRUE(Await([&] { return PriorityOf(orbel.GetProcess(), "RateBridge") == (realTime ? 64 : 0); }));
  orbel.Signal(SIGTERM);
  orbel.WaitForEnd();
}

TEST(JackLoss, WithoutAServerItStartsAndSoundsWhenThereIsOne) {
  ShowFiles files;
  WriteShow(&files);
  const std::string name = JackServer::NewName();
  OrbelInATerminal orbel(
      {"play", files.Show(), "--output", "jack", "--device", name, "--connect", "recorder:in_1"});
  ASSERT_TRUE(orbel.Shows("no audio: null device. No JACK server \"" + name + "\" answers."));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("recovering"));
  JackServer server({}, name);
  const JackRecorder recorder(name, 50'000'000);
  ASSERT_TRUE(orbel.Shows("sound again"));
  EXPECT_TRUE(Await([&] { return recorder.GetCount() > 1'000; }));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST(JackLoss, WithoutASoundSystemTheFirstThatComesIsTaken) {
  ShowFiles files;
  WriteShow(&files);
  const std::string name = JackServer::NewName();
  OrbelInATerminal orbel({"play", files.Show(), "--device", name, "--connect", "recorder:in_1"});
  ASSERT_TRUE(orbel.Shows("no audio: null device. No JACK server \"" + name + "\" answers."));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("recovering"));
  JackServer server({}, name);
  const JackRecorder recorder(name, 50'000'000);
  ASSERT_TRUE(orbel.Shows("sound again: JACK server"));
  EXPECT_TRUE(Await([&] { return recorder.GetCount() > 1'000; }));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

// How far what a recorder hears is ahead of the clock, in seconds: of the periods in `frames`, the one that
// came least late.
double AheadOf(const JackRecorder& recorder, std::size_t frames) {
  double most = -1e9;
  const std::size_t end = recorder.GetCount() + frames;
  const bool sounds = Await([&] {
    const JackRecorder::Newest newest = recorder.GetNewest();
    if (newest.count < 2'000) return false;
    const long long number = NumberOf(recorder.GetFrames()[newest.count - 1]);
    if (number >= 0) most = std::max(most, static_cast<double>(number) / kRate - newest.seconds);
    return newest.count > end;
  });
  return sounds ? most : -1e9;
}

// The same at this moment, when the server has lost nothing lately: where one that was held up stands is
// known after 32 calls, which are 1.4 seconds at 2048 frames a period. One that is held up stands still.
double AheadNow(const JackRecorder& recorder) {
  double now = 0.0;
  const bool isSteady = Await([&] {
    const double before = AheadOf(recorder, 2 * kRate);
    now = AheadOf(recorder, kRate / 10);
    return std::fabs(now - before) < 0.005;
  });
  return isSteady ? now : -1e9;
}

// With 256 frames a period a frame sounds 512 later, with 2048 that is 4096: 75 ms more.
TEST(JackLoss, AServerThatComesBackWithAnotherLatencyIsHeardWhereTheShowIs) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  WriteWav(files.At("data/1 Waltz.obd"), FramesFromZero(300LL * kRate), kRate);
  const std::string name = JackServer::NewName();
  unsigned period = 256;
  const auto start = [&] {
    return std::make_unique<JackServer>(JackServer::Shape{.rateHz = kRate, .periodFrames = period}, name);
  };
  auto server = start();
  OrbelInATerminal orbel({"play", files.Show(), "--output", "jack", "--device", name, "--connect",
                          "recorder:in_1", "--connect", "system:playback_1", "--crossfade", "0", "--fade",
                          "0"});
  ASSERT_TRUE(orbel.Shows("stopped"));
  auto recorder = std::make_unique<JackRecorder>(name, 20'000'000);
  orbel.Type("p");
  // A server that the machine has held up since it came back plays later by that: one outage of three
  // without.
  std::map<unsigned, bool> isRight{{2048U, false}, {256U, false}};
  for (const unsigned next : {2048U, 256U, 2048U, 256U, 2048U, 256U}) {
    if (isRight[2048U] && isRight[256U]) break;
    const double before = AheadNow(*recorder);
    server->End(SIGKILL);
    recorder.reset();
    ASSERT_TRUE(orbel.Shows("recovering"));
    // A recorder has the whole period when it begins, the last frame of which is as much later.
    const double earlier = (2.0 + 1.0) * (static_cast<double>(next) - period) / kRate;
    period = next;
    server = start();
    recorder = std::make_unique<JackRecorder>(name, 20'000'000);
    ASSERT_TRUE(orbel.Shows("sound again")) << orbel.GetScreen();
    const double after = AheadOf(*recorder, kRate);
    std::printf("%u frames a period: taken %.1f ms earlier than before; %.1f would be right\n", period,
                (after - before) * 1000.0, earlier * 1000.0);
    isRight[next] = isRight[next] || std::fabs(after - before - earlier) < 0.03;
  }
  EXPECT_TRUE(isRight[2048U]);
  EXPECT_TRUE(isRight[256U]);
  recorder.reset();
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

// 1024 frames a period: 2048 of them had been taken and had not sounded.
TEST(JackLoss, PolicyHoldGoesOnWithWhatTheServerHadTakenAndNotPlayed) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  WriteWav(files.At("data/1 Waltz.obd"), FramesFromZero(300LL * kRate), kRate);
  const std::string name = JackServer::NewName();
  const JackServer::Shape shape{.rateHz = kRate, .periodFrames = 1024};
  auto server = std::make_unique<JackServer>(shape, name);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "jack", "--device", name, "--connect",
                          "recorder:in_1", "--connect", "system:playback_1", "--crossfade", "0", "--fade",
                          "0", "--on-device-loss", "hold"});
  ASSERT_TRUE(orbel.Shows("stopped"));
  long long last = -1;
  {
    const JackRecorder recorder(name, 20'000'000);
    ASSERT_TRUE(Await([&] { return !recorder.GetSources().empty(); }));
    orbel.Type("p");
    ASSERT_TRUE(Await([&] { return recorder.GetCount() > kRate; }));
    server->End(SIGKILL);
    ASSERT_TRUE(orbel.Shows("Playback is held until you press p"));
    last = NumberOf(recorder.GetFrames().back());
  }
  server = std::make_unique<JackServer>(shape, name);
  const JackRecorder recorder(name, 20'000'000);
  ASSERT_TRUE(orbel.Shows("sound again"));
  ASSERT_TRUE(orbel.Shows(" ms  latency "));
  ASSERT_TRUE(orbel.Shows(" ms  load"));
  const std::string latency = " ms  latency ";
  const std::size_t shown = orbel.GetScreen().find(latency, orbel.GetScreen().find("sound again"));
  EXPECT_GE(std::stoi(orbel.GetScreen().substr(shown + latency.size())), 21) << "from the first moment on";
  ASSERT_TRUE(Await([&] { return !recorder.GetSources().empty(); }));
  EXPECT_EQ(recorder.GetCount(), 0U);
  // The device fades in, which nobody can see from outside.
  double there = 0.0;
  ASSERT_TRUE(Await([&] { return (there = recorder.GetNewest().seconds) > 0.0; }));
  ASSERT_TRUE(Await([&] { return recorder.GetNewest().seconds > there + 0.3; }));
  orbel.Type("p");
  ASSERT_TRUE(Await([&] { return recorder.GetCount() > 10'000; }));
  const long long first = NumberOf(recorder.GetFrames().front());
  // The recorder may have missed the very last period.
  EXPECT_GE(first, last + 1 - 2048);
  EXPECT_LE(first, last + 1 - 1024);
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST(JackLoss, WhatTheLibrarySaysIsShownOnceWhereItIsAskedFor) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  for (const bool verbose : {true, false}) {
    JackServer server;
    std::vector<std::string> words{"play", files.Show(), "--output", "jack", "--device", server.GetName()};
    if (verbose) words.emplace_back("--verbose");
    OrbelInATerminal orbel(words);
    ASSERT_TRUE(orbel.Shows("stopped"));
    server.End(SIGKILL);
    ASSERT_TRUE(orbel.Shows("no audio: null device"));
    if (verbose) {
      // On lines of their own.
      ASSERT_TRUE(orbel.Shows("\r\x1b[JJACK: ")) << orbel.GetScreen();
    }
    ASSERT_TRUE(orbel.Shows("still no audio."));
    ASSERT_TRUE(orbel.Shows("stopped"));
    orbel.Type("q");
    orbel.WaitForEnd();
    const std::string screen = orbel.GetScreen();
    const std::string line = "Cannot connect to server socket";
    EXPECT_EQ(screen.find(line) != std::string::npos, verbose) << screen;
    EXPECT_EQ(screen.find(line), screen.rfind(line)) << "the search says it every second";
  }
}

TEST(JackLoss, ADeviceThatStaysAwayIsTheStatusSix) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  const Ended run = Orbel({"play", files.Show(), "--output", "jack", "--device", JackServer::NewName()});
  EXPECT_EQ(run.status, 6) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr("Everything else works; a device is looked for every second."));
}

TEST(JackLoss, PolicyEndEndsAndPolicyHoldHolds) {
  ShowFiles files;
  WriteShow(&files);
  for (const std::string policy : {"end", "hold"}) {
    JackServer server;
    OrbelInATerminal orbel(
        {"play", files.Show(), "--output", "jack", "--device", server.GetName(), "--on-device-loss", policy});
    ASSERT_TRUE(orbel.Shows("stopped"));
    orbel.Type("p");
    ASSERT_TRUE(orbel.Shows("playing"));
    server.End(SIGKILL);
    if (policy == "hold") {
      ASSERT_TRUE(orbel.Shows("Playback is held until you press p; a device is looked for every second."));
      ASSERT_TRUE(orbel.Shows("paused"));
      orbel.Type("q");
      ASSERT_TRUE(orbel.Shows("paused (no sound): q once more ends it"));
      orbel.Type("p");
      ASSERT_TRUE(orbel.Shows("recovering")) << "what the performer decides is done";
      // By then the first time has been forgotten.
      std::this_thread::sleep_for(std::chrono::seconds(6));
      orbel.Type("q");
      ASSERT_TRUE(orbel.Shows("recovering: q once more ends it"));
      orbel.Type("q");
    } else {
      ASSERT_TRUE(orbel.Shows("Playback ends, as --on-device-loss asks."));
    }
    EXPECT_EQ(orbel.WaitForEnd(), 6) << policy;
  }
}

// The output stops as at the end of a song: what acts in the place of a performer must not take it for one.
TEST(JackLoss, PolicyEndBeginsNoOtherSongWhereNobodySitsAtTheKeys) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  files.AddSong("2", "Polka", 300);
  JackServer server;
  RunningOrbel orbel({"play", files.Show(), "--output", "jack", "--device", server.GetName(),
                      "--on-device-loss", "end", "--json"});
  ASSERT_TRUE(orbel.Says("Playing to JACK server"));
  ASSERT_TRUE(orbel.Says("playing"));
  server.End(SIGKILL);
  const Ended run = orbel.WaitForEnd();
  EXPECT_EQ(run.status, 6) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr("Playback ends, as --on-device-loss asks."));
  EXPECT_THAT(run.messages, testing::Not(HasSubstr("2 Polka   bar")));
  EXPECT_THAT(run.out, HasSubstr("\"song\": \"1 Waltz\""));
}

// What acts in the place of a performer would go on at once; a script that says play all the time is no
// performer either.
TEST(JackLoss, HeldPlaybackIsNotStartedAgainByAnybodyButAPerformer) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  std::string script;
  for (int tenth = 1; tenth < 1'000; ++tenth) {
    script += "time " + std::to_string(tenth / 10) + "." + std::to_string(tenth % 10) + " play\n";
  }
  files.Write("../script.txt", script);
  const std::string name = JackServer::NewName();
  for (const bool scripted : {false, true}) {
    auto server = std::make_unique<JackServer>(JackServer::Shape{}, name);
    std::vector<std::string> words{"play", files.Show(), "--output",         "jack", "--device",
                                   name,   "--json",     "--on-device-loss", "hold"};
    if (scripted) words.insert(words.end(), {"--script", files.Beside("script.txt")});
    RunningOrbel orbel(words);
    ASSERT_TRUE(orbel.Says("Playing to JACK server"));
    server->End(SIGKILL);
    ASSERT_TRUE(
        orbel.Says("Playback is held until somebody plays, which takes a terminal; Ctrl-C ends it; a "
                   "device is looked for every second."));
    server = std::make_unique<JackServer>(JackServer::Shape{}, name);
    ASSERT_TRUE(orbel.Says("sound again"));
    // One is enough where nothing plays.
    orbel.Signal(SIGINT);
    orbel.Signal(SIGINT);
    const Ended run = orbel.WaitForEnd();
    EXPECT_EQ(run.status, 0) << run.messages;
    EXPECT_THAT(run.out, HasSubstr("\"state\": \"paused\"")) << (scripted ? "with a script" : "");
    EXPECT_THAT(run.messages, HasSubstr("; playback is held until somebody plays"));
  }
}

TEST(JackOutputs, WhileNobodyHearsItItIsSaidAndNothingSaysThatItPlays) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  JackServer server;
  const std::string unheard =
      "The JACK server \"" + server.GetName() +
      "\" has our ports connected to nothing, so nobody hears it: no port matches --connect.";
  {
    OrbelInATerminal orbel({"play", files.Show(), "--output", "jack", "--device", server.GetName(),
                            "--connect", "recorder:in_1"});
    ASSERT_TRUE(orbel.Shows(unheard));
    orbel.Type("p");
    ASSERT_TRUE(orbel.Shows("unheard"));
    EXPECT_THAT(orbel.GetScreen(), testing::Not(HasSubstr("laying")));
    {
      const JackRecorder recorder(server.GetName(), 1'000'000);
      ASSERT_TRUE(orbel.Shows("sound again: JACK server"));
      ASSERT_TRUE(orbel.Shows("playing"));
    }
    ASSERT_TRUE(orbel.Shows(unheard));
    ASSERT_TRUE(orbel.Shows("unheard"));
    orbel.Type("q");
    ASSERT_TRUE(orbel.Shows("unheard: q once more ends it"));
    orbel.Type("q");
    EXPECT_EQ(orbel.WaitForEnd(), 0);
  }
  RunningOrbel run({"play", files.Show(), "--output", "jack", "--device", server.GetName(), "--connect",
                    "recorder:in_1", "--json"});
  ASSERT_TRUE(run.Says(unheard));
  run.Signal(SIGINT);
  ASSERT_TRUE(run.Says("Ctrl-C once more ends it"));
  run.Signal(SIGINT);
  const Ended ended = run.WaitForEnd();
  EXPECT_THAT(ended.out, HasSubstr("\"state\": \"stopped (no sound)\""));
  EXPECT_THAT(ended.out, HasSubstr("\"unheard\": \"The JACK server"));
}

TEST(JackOutputs, OneOfTwoThatIsTakenAwayIsSaidOnceAndPlaybackGoesOn) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  const JackServer server({.rateHz = kRate, .periodFrames = 256, .outputs = 2});
  OrbelInATerminal orbel({"play", files.Show(), "--output", "jack", "--device", server.GetName()});
  ASSERT_TRUE(orbel.Shows("stopped"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("playing"));
  JackRecorder other(server.GetName(), 1);
  other.DisconnectPorts("orbel:out_1", "system:playback_2");
  const std::string missing =
      "orbel:out_1 is not connected to system:playback_2, so nobody hears it there. Connect it again by "
      "hand.";
  ASSERT_TRUE(orbel.Shows(missing));
  ASSERT_TRUE(orbel.Shows("playing")) << "it is heard on the other side";
  other.ConnectPorts("orbel:out_1", "system:playback_2");
  ASSERT_TRUE(orbel.Shows("everything is connected again"));
  EXPECT_EQ(orbel.GetScreen().find(missing), orbel.GetScreen().rfind(missing)) << "once";
  EXPECT_THAT(orbel.GetScreen(), testing::Not(HasSubstr("unheard")));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST(JackOutputs, FewerThanTheShowWantsAreSaidAtTheStart) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  JackServer server({.rateHz = kRate, .periodFrames = 256, .outputs = 1});
  const Ended run =
      Orbel({"play", files.Show(), "--output", "jack", "--device", server.GetName(), "--channels", "1,2"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.messages,
              HasSubstr("Playing to JACK server \"" + server.GetName() + "\", 48000 Hz, 256 frames"));
  EXPECT_THAT(run.messages,
              HasSubstr("The show wants output 2 and the device has 1: what there is is used. Connect more"));
  const Ended unheard =
      Orbel({"play", files.Show(), "--output", "jack", "--device", server.GetName(), "--channels", "2"});
  EXPECT_THAT(unheard.messages, HasSubstr("our ports connected to nothing, so nobody hears it. Connect "
                                          "orbel:out_1 and so on by hand, or choose with --channels"));
  EXPECT_THAT(unheard.messages,
              HasSubstr("The show wants output 2 and the device has 1. Connect more outputs"));
  EXPECT_THAT(unheard.messages, testing::Not(HasSubstr("Playing to")));
}

TEST(JackOutputs, DevicesListsTheServerAndSaysWhatWouldBeUsed) {
  JackServer server({.rateHz = 44100, .periodFrames = 512, .outputs = 2});
  const Ended there = Orbel({"devices", "--device", server.GetName()});
  EXPECT_EQ(there.status, 0);
  EXPECT_THAT(there.out, testing::ContainsRegex("jack +" + server.GetName() + " +44100 +2 +512"));
  EXPECT_THAT(there.out, HasSubstr("play would use jack: it is the first that answers."));
  const Ended gone = Orbel({"devices", "--device", "nobody_is_called_so"});
  EXPECT_THAT(gone.out, HasSubstr("jack: No JACK server \"nobody_is_called_so\" answers."));
  EXPECT_THAT(gone.out, HasSubstr("play would use null: no sound system answers."));
  EXPECT_THAT(gone.out, HasSubstr("Start it, or choose another output.\n"))
      << "who is here need not be sent here";
}

TEST(JackOutputs, AServerThatHangsIsWaitedForAMomentAndSaid) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  JackServer server;
  server.Signal(SIGSTOP);
  const std::string name = "the JACK server \"" + server.GetName() + "\"";
  const Ended devices = Orbel({"devices", "--device", server.GetName()});
  EXPECT_EQ(devices.status, 0);
  EXPECT_THAT(devices.messages, HasSubstr("Waiting for " + name + " to answer ..."));
  EXPECT_THAT(devices.out, HasSubstr("jack: There is " + name + ", but it does not answer: it hangs"));
  EXPECT_THAT(devices.out, HasSubstr("play would use null: no sound system answers."));
  const Ended play = Orbel({"play", files.Show(), "--device", server.GetName()});
  EXPECT_EQ(play.status, 0) << play.messages;
  EXPECT_THAT(play.messages, HasSubstr("Waiting for " + name + " to answer ..."));
  EXPECT_THAT(play.messages,
              HasSubstr("song 1 is still loading, or the audio device still opening: waiting for them"));
  EXPECT_THAT(play.messages, HasSubstr("no audio: null device. The audio device does not answer."));
  server.Signal(SIGCONT);
}

TEST(JackBench, WithoutAServerItSaysWhatToDo) {
  const std::string name = JackServer::NewName();
  const Ended run = Orbel({"bench", "live", "--output", "jack", "--device", name});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr("There is no device to measure. No JACK server \"" + name +
                                      "\" answers. Start it, or choose another output"));
}

// A clock goes on in the device's place: what it is measured to do is no figure of the device.
TEST(JackBench, WhereTheServerDiesNoFiguresAreToldButThat) {
  JackServer server;
  RunningOrbel orbel({"bench", "live", "--output", "jack", "--device", server.GetName(), "--trials", "20"});
  {
    const JackRecorder recorder(server.GetName(), 1);
    ASSERT_TRUE(Await([&] { return recorder.HasPort("orbel:out_2"); }));
  }
  server.End(SIGKILL);
  const Ended run = orbel.WaitForEnd();
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  // It may not have begun yet.
  EXPECT_THAT(run.messages, testing::AnyOf(HasSubstr("The device was lost while it was measured. "),
                                           HasSubstr("There is no device to measure. ")));
}

TEST(JackOutputs, HowItWentIsToldAsJson) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  JackServer server;
  const Ended run = Orbel({"play", files.Show(), "--output", "jack", "--device", server.GetName(), "--json"});
  EXPECT_EQ(run.status, 0);
  for (const char* const key : {"\"device\"", "\"peaks\"", "\"ringMs\"", "\"latencyMs\"", "\"renderLoad\"",
                                "\"underrunFrames\"", "\"xruns\"", "\"deviceLosses\": 0"}) {
    EXPECT_THAT(run.out, HasSubstr(key));
  }
}

}  // namespace
}  // namespace host_tests
