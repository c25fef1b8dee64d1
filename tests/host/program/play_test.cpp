#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/host/run_orbel.h"
#include "tests/host/show_files.h"

namespace host_tests {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(Play, WithoutATerminalPlaysTheShowThroughAndEnds) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2, "[[vamp]]\nfrom = \"1.2\"\nto = \"1.3\"\n[[caesura]]\nat = \"2\"\n");
  files.AddSong("2", "Polka", 1);
  const Ended run = Orbel({"play", files.Show(), "--output", "null"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(
      run.messages,
      HasSubstr("No terminal, so nobody at the keys: a vamp is played 1 time, a caesura waits 0 s, and song "
                "follows song to the end of the show.\n"));
  EXPECT_THAT(run.messages, HasSubstr("\nPlaying to a clock without sound, 8000 Hz, 256 frames a period.\n"));
  EXPECT_THAT(run.messages, HasSubstr("1 Waltz   bar "));
  EXPECT_THAT(run.messages, HasSubstr("2 Polka   bar "));
}

TEST(Play, AtTheEndItTellsWhereTheLastSongHasEnded) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  files.AddSong("2", "Polka", 2);
  files.Write("../nothing.txt", "");
  for (const bool scripted : {false, true}) {
    std::vector<std::string> words{"play", files.Show(), "--output", "null", "--json", "--song", "2"};
    if (scripted) words.insert(words.end(), {"--script", files.Beside("nothing.txt")});
    const Ended run = Orbel(words);
    EXPECT_EQ(run.status, 0) << run.messages;
    EXPECT_THAT(run.out, HasSubstr("\"song\": \"2 Polka\""));
    EXPECT_THAT(run.out, HasSubstr("\"position\": \"3.1\""));
    EXPECT_THAT(run.out, HasSubstr("\"state\": \"ended\""));
  }
}

// A long script is looked through at every look, so that the end often comes in the middle of one.
TEST(Play, AScriptThatHasNothingLeftEndsWhenTheSongIsToldToHaveEnded) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  std::string script;
  for (int i = 0; i < 20'000; ++i) script += "at 1.1 pass 99 go\n";
  files.Write("../nothing.txt", script);
  for (int i = 0; i < 6; ++i) {
    const Ended run = Orbel({"play", files.Show(), "--output", "file", "--device", files.Beside("take.wav"),
                             "--json", "--script", files.Beside("nothing.txt")});
    EXPECT_THAT(run.out, HasSubstr("\"state\": \"ended\""));
  }
}

// Where nobody sits at the keys it is left like any other.
TEST(Play, BehindACaesuraAtTheEndOfASongTheNextFollows) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1, "[[caesura]]\nat = \"2\"\n");
  files.AddSong("2", "Polka", 1);
  const std::string out = files.Beside("take.wav");
  for (const bool intoAFile : {false, true}) {
    std::vector<std::string> words{"play", files.Show(), "--output", intoAFile ? "file" : "null", "--json"};
    if (intoAFile) words.insert(words.end(), {"--device", out});
    RunningOrbel orbel(words);
    EXPECT_TRUE(orbel.Says("2 Polka   bar "));
    const Ended run = orbel.WaitForEnd();
    EXPECT_EQ(run.status, 0) << run.messages;
    EXPECT_THAT(run.out, HasSubstr("\"song\": \"2 Polka\""));
  }
}

TEST(Play, AScriptActsWhereNobodyIsAtTheKeys) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 30, "[[vamp]]\nfrom = \"1.1\"\nto = \"1.2\"\n");
  files.Write("../script.txt", "at 1.1 pass 3 go\nat 1.3 seek 30\n");
  const Ended run = Orbel({"play", files.Show(), "--output", "null", "--script", files.Beside("script.txt")});
  EXPECT_EQ(run.status, 0) << run.messages;
}

// The place is there in the other song, and so not seen to be wrong before it plays.
TEST(Play, AScriptThatFailsEndsWithStatusOne) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2);
  files.AddSong("2", "Polka", 9);
  files.Write("../script.txt", "time 0.1 seek 7\n");
  const std::string script = files.Beside("script.txt");
  for (const std::vector<std::string>& output :
       {std::vector<std::string>{"null"},
        std::vector<std::string>{"file", "--device", files.Beside("take.wav")}}) {
    std::vector<std::string> words{"play", files.Show(), "--script", script, "--output"};
    words.insert(words.end(), output.begin(), output.end());
    const Ended run = Orbel(words);
    EXPECT_EQ(run.status, 1) << run.messages;
    EXPECT_THAT(run.messages,
                HasSubstr(script + ":1: \"7\": bar 7 does not exist: the song has bars 1 to 2\n"));
  }
}

TEST(Play, AVampThatTheScriptDoesNotLeaveEndsWithStatusThree) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2, "[[vamp]]\nfrom = \"1.1\"\nto = \"1.2\"\n");
  files.Write("../script.txt", "");
  const Ended run = Orbel({"play", files.Show(), "--output", "null", "--script", files.Beside("script.txt")});
  EXPECT_EQ(run.status, 3) << run.messages;
}

std::string Last(const std::string& text) {
  const std::size_t end = text.find_last_not_of('\n');
  return text.substr(text.rfind('\n', end) + 1, end - text.rfind('\n', end));
}

// Without the silence around and between what is played.
std::vector<float> PlayedInto(const std::string& path) {
  std::vector<float> frames = ReadFloatWav(path);
  std::erase(frames, 0.0F);
  return frames;
}

TEST(PlayIntoAFile, HasEveryFrameThatWouldBeHeardAndDoesNotWaitForTheClock) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60, "[[repeat]]\nfrom = \"2\"\nto = \"3\"\n[[caesura]]\nat = \"50\"\n");
  files.AddSong("2", "Polka", 2);
  const std::string out = files.Beside("take.wav");
  const auto start = std::chrono::steady_clock::now();
  const Ended run = Orbel({"play", files.Show(), "--output", "file", "--device", out, "--crossfade", "0",
                           "--fade", "0", "--json"});
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  ASSERT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr("Playing into the file " + out + ", 8000 Hz.\n"));
  EXPECT_LT(time.count(), 63.0) << "faster than it sounds";
  std::vector<float> expected = FramesFromZero(2L * ShowFiles::kRate);
  for (long long frame = ShowFiles::kRate; frame < 60L * ShowFiles::kRate; ++frame)
    expected.push_back(FrameValue(frame));
  for (const float sample : FramesFromZero(2L * ShowFiles::kRate)) expected.push_back(sample);
  const std::vector<float> played = PlayedInto(out);
  EXPECT_EQ(played.size(), expected.size());
  EXPECT_TRUE(played == expected);
  EXPECT_THAT(run.out, HasSubstr("\"underrunFrames\": 0"));
}

TEST(PlayIntoAFile, ACaesuraWaitsInSilence) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2, "[[caesura]]\nat = \"2\"\n");
  const std::string out = files.Beside("take.wav");
  const Ended run = Orbel(
      {"play", files.Show(), "--output", "file", "--device", out, "--fade", "0", "--caesura-silence", "1.5"});
  ASSERT_EQ(run.status, 0) << run.messages;
  const std::vector<float> frames = ReadFloatWav(out);
  EXPECT_EQ(PlayedInto(out), FramesFromZero(2L * ShowFiles::kRate));
  // Silence goes on, faster than real time, while the player's threads hand the caesura on to the host.
  EXPECT_GE(static_cast<double>(frames.size()) / ShowFiles::kRate, 3.5);
}

TEST(PlayIntoAFile, WhatCannotBeWrittenIsSaidAndLeavesNothing) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60);
  const auto into = [&](const std::string& name) {
    return Orbel({"play", files.Show(), "--output", "file", "--device", name});
  };
  const Ended nameless = Orbel({"play", files.Show(), "--output", "file"});
  EXPECT_EQ(nameless.status, 2);
  EXPECT_EQ(Last(nameless.messages), "orbel: --output file needs the name of the file: --device FILE");
  const Ended nowhere = into(files.Beside("no folder/take.wav"));
  EXPECT_EQ(nowhere.status, 1);
  EXPECT_EQ(Last(nowhere.messages), "orbel: " + files.Beside("no folder/take.wav") +
                                        ": cannot be written: No such file or directory. Choose another "
                                        "place, or make room.");
  const Ended show = into(files.Show() + "/show.toml");
  EXPECT_EQ(show.status, 2);
  EXPECT_THAT(show.messages, HasSubstr("show.toml: is a place of the show itself; choose a name outside"));
  // Refuses bytes from a hundred thousand on, as a full disk does.
  const std::string out = files.Beside("take.wav");
  const std::string command = "ulimit -f 100; '" ORBEL_PROGRAM "' play '" + files.Show() +
                              "' --output file --device '" + out + "' </dev/null 2>'" + files.Beside("said") +
                              "'";
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
  EXPECT_THAT(ReadText(files.Beside("said")), HasSubstr("orbel: " + out + ": cannot be written: "));
  EXPECT_FALSE(std::filesystem::exists(out));
  EXPECT_FALSE(std::filesystem::exists(out + ".part"));
}

TEST(PlayOptions, EachDoesWhatItSays) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  const Ended run = Orbel({"play", files.Show(), "--output", "null", "--rate", "44100", "--period", "512",
                           "--ahead", "200", "--json", "--script", "/dev/null"});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr("Playing to a clock without sound, 44100 Hz, 512 frames a period.\n"));
  // What is rendered ahead shows in the status line while it plays; less of it when a period has just been
  // taken.
  EXPECT_THAT(run.messages, testing::ContainsRegex("ring (1[5-9]|20)[0-9] ms"));
  const std::string out = files.Beside("take.wav");
  const Ended file =
      Orbel({"play", files.Show(), "--output", "file", "--device", out, "--rate", "16000", "--fade", "0"});
  EXPECT_EQ(file.status, 0) << file.messages;
  EXPECT_THAT(file.messages, HasSubstr(out + ", 16000 Hz.\n"));
}

// What is rendered ahead of a place that was sought, or a song that has begun, is no place passed by.
TEST(PlayScript, ActsAtTheVeryPlaceThatASeekOrASongLeadsTo) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 4, "attacca = true\n");
  files.AddSong("2", "Polka", 1);
  const std::vector<std::pair<std::string, int>> scripts{
      {"at 1.2 seek 4.1\nat 4.1 transpose 3\n", 3},
      {"at 1.2 seek 4.1\nat 4.2 left\nat 4.1 pass 2 transpose 2\n", 2},
      {"at 1.1 pass 2 transpose -2\n", -2}};
  for (const auto& [script, semitones] : scripts) {
    files.Write("../script.txt", script);
    const Ended run =
        Orbel({"play", files.Show(), "--output", "null", "--json", "--script", files.Beside("script.txt")});
    ASSERT_EQ(run.status, 0) << script << run.messages;
    EXPECT_EQ(nlohmann::json::parse(run.out)["transposition"], semitones) << script << run.messages;
  }
}

TEST(PlayJson, TellsHowItStoodAndHowTheSoundWas) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  files.Write("../slower.txt", "at 1.1 tempo 0.8\nat 1.1 transpose -2\n");
  for (const bool scripted : {false, true}) {
    std::vector<std::string> words{"play", files.Show(), "--output", "null", "--fade", "0", "--json"};
    if (scripted) words.insert(words.end(), {"--script", files.Beside("slower.txt")});
    const Ended run = Orbel(words);
    ASSERT_EQ(run.status, 0) << run.messages;
    const nlohmann::json told = nlohmann::json::parse(run.out);
    EXPECT_EQ(told["song"], "1 Waltz");
    EXPECT_EQ(told["position"], "2.1");
    EXPECT_EQ(told["state"], "ended");
    EXPECT_EQ(told["tempo"], scripted ? 192.0 : 240.0);
    EXPECT_EQ(told["tempoScale"], scripted ? 0.8 : 1.0);
    EXPECT_EQ(told["transposition"], scripted ? -2 : 0);
    EXPECT_EQ(told["device"], "a clock without sound, 8000 Hz, 256 frames a period");
    EXPECT_EQ(told["recovering"], false);
    EXPECT_EQ(told["unheard"], "");
    EXPECT_EQ(told["deviceLosses"], 0);
    ASSERT_EQ(told["peaks"].size(), 1U);
    if (!scripted) {
      EXPECT_NEAR(told["peaks"][0], FrameValue(ShowFiles::kRate - 1), 1e-6) << "of all of it";
    }
    EXPECT_EQ(told["latencyMs"], 0.0);
    const nlohmann::json& load = told["renderLoad"];
    EXPECT_GT(load["median"], 0.0);
    EXPECT_LE(load["median"], load["p999"]);
    EXPECT_LT(load["median"], load["longest"]);
    EXPECT_LE(load["p999"], load["longest"]);
    EXPECT_GE(told["ringMs"], 0.0);
    EXPECT_GE(told["underrunFrames"], 0);
    EXPECT_EQ(told["xruns"], 0);
  }
}

TEST(PlayOptions, WithoutASoundSystemItPlaysToTheClockAndSaysSo) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  const Ended run = Orbel({"play", files.Show(), "--device", "nobody_is_called_so"});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages,
              HasSubstr("no audio: null device. No JACK server \"nobody_is_called_so\" answers."));
}

constexpr char kNoLock[] =
    "the system does not let memory be locked, so sound may drop out when memory runs short; for a stage "
    "machine put \"@audio - memlock unlimited\" and \"@audio - rtprio 95\" into "
    "/etc/security/limits.d/audio.conf, add yourself to the group audio, and log in again\n";

// Whether this process, and so one that it starts, may lock what memory it likes.
bool MayLockMemory() {
  rlimit limit{};
  if (::geteuid() != 0 && (::getrlimit(RLIMIT_MEMLOCK, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY)) {
    return false;
  }
  const pid_t child = ::fork();
  if (child == 0) ::_exit(::mlockall(MCL_CURRENT | MCL_ONFAULT) == 0 ? 0 : 1);
  int status = -1;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// What the kernel keeps in memory of a process; sanitizers keep programs from locking anything.
long long LockedKilobytes(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmLck:", 0) == 0) return std::atoll(line.c_str() + 6);
  }
  return -1;
}

TEST(PlayInMemory, IsLockedThereWhereTheSystemGrantsIt) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60);
  RunningOrbel running({"play", files.Show(), "--output", "null"});
  ASSERT_TRUE(running.Says("playing   next: 61.1 end"));
  const long long locked = LockedKilobytes(running.GetProcess());
  running.Signal(SIGTERM);
  const Ended run = running.WaitForEnd();
  if (!MayLockMemory()) {
    EXPECT_THAT(run.messages, HasSubstr(kNoLock));
    return;
  }
  EXPECT_THAT(run.messages, Not(HasSubstr("let memory be locked")));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  EXPECT_GT(locked, 0);
#endif
}

TEST(PlayInMemory, OfNobodyWithoutRightsItIsSaidWithTheRemedyAndTheShowPlays) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  const std::string said = files.Beside("said");
  const std::string asNobody = ::geteuid() == 0 ? "setpriv --reuid 65534 --clear-groups " : "";
  const std::string command = "ulimit -l 64; ulimit -r 0; " + asNobody + "'" ORBEL_PROGRAM "' play '" +
                              files.Show() + "' --output null </dev/null 2>'" + said + "'";
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 0);
  const std::string messages = ReadText(said);
  EXPECT_THAT(messages, HasSubstr(kNoLock));
  EXPECT_THAT(messages, HasSubstr("the system grants the audio output no real-time priority; sound may drop "
                                  "out when other programs are busy. For a stage machine put \"@audio - "
                                  "rtprio 95\" into /etc/security/limits.d/audio.conf, add yourself to the "
                                  "group audio, and log in again."));
  EXPECT_THAT(messages, HasSubstr("1 Waltz   bar 2.1"));
}

TEST(PlayOptions, WrongValuesAreToldWithStatusTwo) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> kWrong{
      {{"--output", "horn"}, "orbel: --output: horn not in {auto,jack,desktop,null,file}"},
      {{"--rate", "7"}, "orbel: --rate: \"7\" is not a number from 8000 to 384000"},
      {{"--period", "8"}, "orbel: --period: \"8\" is not a whole number from 16 to 8192"},
      {{"--ahead", "0"}, "orbel: --ahead: \"0\" is not a number from 1 to 2000"},
      {{"--channels", "1,0"}, "orbel: --channels: \"0\" is not a whole number from 1 to 1024"},
      {{"--connect", "("}, "orbel: "},
      {{"--output", "null", "--device", "horn"},
       "orbel: --output null is a clock and has no devices: leave --device out, or choose another output"},
      {{"--output", "null", "--channels", "3,4"},
       "orbel: --output null has no outputs to choose among: leave --channels out, or choose another output"},
      {{"--output", "file", "--device", "/nowhere/take.wav", "--channels", "3,4"},
       "orbel: --output file has no outputs to choose among: leave --channels out, or choose another output"},
      {{"--output", "null", "--connect", "horn:in_.*"},
       "orbel: --output null has no ports to connect: leave --connect out, or choose --output jack"},
      {{"--output", "desktop", "--connect", "horn:in_.*"},
       "orbel: --output desktop has no ports to connect: leave --connect out, or choose --output jack"},
      {{"--output", "file", "--device", "/nowhere/take.wav", "--connect", "horn:in_.*"},
       "orbel: --output file has no ports to connect: leave --connect out, or choose --output jack"},
      {{"--output", "file", "--device", "/nowhere/take.xyz"},
       "orbel: /nowhere/take.xyz: the ending says what is written: end the name in .wav, .flac or .ogg"},
      {{"--output", "file", "--device", "/nowhere/wav"},
       "orbel: /nowhere/wav: the ending says what is written: end the name in .wav, .flac or .ogg"}};
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  for (const auto& [options, message] : kWrong) {
    std::vector<std::string> arguments{"play", files.Show()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Ended run = Orbel(arguments);
    EXPECT_EQ(run.status, 2) << message;
    EXPECT_THAT(run.messages, HasSubstr(message));
  }
}

TEST(Play, CtrlCAsksOnceWhilePlayingAndEndsTheSecondTime) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60);
  RunningOrbel running({"play", files.Show(), "--output", "null", "--json"});
  ASSERT_TRUE(running.Says("playing   next: 61.1 end"));
  running.Signal(SIGINT);
  ASSERT_TRUE(running.Says("playing: Ctrl-C once more ends it"));
  running.Signal(SIGINT);
  const Ended run = running.WaitForEnd();
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(Last(run.messages), HasSubstr("240 bpm   stopped   next: 61.1 end"))
      << "nothing plays any more";
  EXPECT_THAT(run.out, HasSubstr("\"state\": \"stopped\""));
}

TEST(Play, CtrlCNeverAsksAsIfSomebodyHeardIt) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60);
  RunningOrbel running({"play", files.Show(), "--output", "jack", "--device", "nobody_is_called_so"});
  ASSERT_TRUE(running.Says("recovering   next: 61.1 end"));
  running.Signal(SIGINT);
  ASSERT_TRUE(running.Says("recovering: Ctrl-C once more ends it"));
  running.Signal(SIGINT);
  EXPECT_THAT(running.WaitForEnd().messages, Not(HasSubstr("playing")));
}

TEST(Play, AHangUpDoesNotEndIt) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2);
  RunningOrbel running({"play", files.Show(), "--output", "null"});
  ASSERT_TRUE(running.Says("playing   next: 3.1 end"));
  running.Signal(SIGHUP);
  EXPECT_EQ(running.WaitForEnd().status, 0) << "at the end of the show, and not by the signal";
}

TEST(Play, ASongThatCannotBePlayedIsSaidAndPassedOver) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  files.AddSong("2", "Polka", 1);
  files.Write("data/1 Waltz.obd", "no audio");
  const Ended run = Orbel({"play", files.Show(), "--output", "null"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.messages, HasSubstr("data/1 Waltz.obd"));
  EXPECT_THAT(run.messages, HasSubstr("2 Polka   bar "));
}

}  // namespace
}  // namespace host_tests
