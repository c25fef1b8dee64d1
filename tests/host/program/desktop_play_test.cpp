// The program against a real PulseAudio server without hardware, which the tests start themselves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>
#include <utility>

#include "tests/host/run_orbel.h"
#include "tests/host/show_files.h"
#include "tests/host/started.h"
#include "tests/host/terminal_program.h"

namespace host_tests {
namespace {

using testing::HasSubstr;

constexpr unsigned kRate = 48'000;
constexpr char kStage[] = "module-null-sink sink_name=stage rate=48000 format=float32le channels=2";

template <typename Condition>
bool Await(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

class Desktop : public testing::Test {
 protected:
  Desktop() {
    folder_ = std::filesystem::temp_directory_path() / ("orbel_desktop_" + std::to_string(::getpid()));
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
    std::filesystem::permissions(folder_, std::filesystem::perms::owner_all);
    ::setenv("XDG_RUNTIME_DIR", folder_.c_str(), 1);
    ::setenv("HOME", folder_.c_str(), 1);
    StartServer();
  }
  ~Desktop() override {
    server_.reset();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  // A server with one output that nobody hears, "stage"; or with other modules.
  void StartServer(const std::vector<std::string>& modules = {kStage}) {
    std::vector<std::string> words{"pulseaudio",
                                   "-n",
                                   "--exit-idle-time=-1",
                                   "--daemonize=no",
                                   "--disallow-exit",
                                   "--realtime=no",
                                   "--use-pid-file=no",
                                   "-L",
                                   "module-native-protocol-unix"};
    for (const std::string& module : modules) words.insert(words.end(), {"-L", module});
    server_ = std::make_unique<Started>(std::move(words));
    // Its socket is there before anybody answers at it.
    ASSERT_TRUE(Await([this] {
      return std::filesystem::exists(folder_ / "pulse" / "native") && Started({"pactl", "info"}).Wait();
    })) << "pulseaudio does not come up; is it installed?";
  }
  // As a crash leaves it.
  void KillServer() {
    server_->End(SIGKILL);
    std::filesystem::remove(folder_ / "pulse" / "native");
  }

  static void Unplug() { ASSERT_TRUE(Started({"pactl", "unload-module", "module-null-sink"}).Wait()); }
  static void PlugIn() {
    ASSERT_TRUE(Started({"pactl", "load-module", "module-null-sink", "sink_name=stage", "rate=48000",
                         "format=float32le", "channels=2"})
                    .Wait());
  }

  std::filesystem::path folder_;
  std::unique_ptr<Started> server_;
};

std::vector<float> ReadRaw(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  std::vector<float> samples(bytes.size() / sizeof(float));
  std::copy_n(bytes.data(), samples.size() * sizeof(float), reinterpret_cast<char*>(samples.data()));
  return samples;
}

TEST_F(Desktop, TheSongArrivesFrameForFrame) {
  constexpr long long kSeconds = 6;
  ShowFiles files;
  files.AddSong("1", "Waltz", kSeconds);
  WriteWav(files.At("data/1 Waltz.obd"), FramesFromZero(kSeconds * kRate), kRate);
  const std::string taken = files.Beside("taken.raw");
  Started recorder(
      {"parec", "-d", "stage.monitor", "--format=float32le", "--rate=48000", "--channels=2", "--raw", taken});
  // Its first bytes are silence.
  ASSERT_TRUE(Await([&] { return std::filesystem::exists(taken) && std::filesystem::file_size(taken) > 0; }));
  const Ended run = Orbel({"play", files.Show(), "--output", "desktop", "--crossfade", "0", "--fade", "0"});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, testing::ContainsRegex("Playing to PulseAudio \"[^\"]+\", 48000 Hz"));
  recorder.End(SIGTERM);

  const std::vector<float> samples = ReadRaw(taken);
  long long last = -2;
  long long arrived = 0;
  long long longest = 0;
  long long inARow = 0;
  for (std::size_t i = 0; i + 1 < samples.size(); i += 2) {
    ASSERT_EQ(samples[i], samples[i + 1]) << "one channel sounds on both sides";
    if (samples[i] == 0.0F) continue;
    const double number = static_cast<double>(samples[i]) * 16777216.0 - 1.0;
    ASSERT_EQ(number, std::floor(number)) << "nothing that the song does not hold\n" << run.messages;
    const auto frame = static_cast<long long>(number);
    inARow = frame == last + 1 ? inARow + 1 : 1;
    longest = std::max(longest, inARow);
    last = frame;
    ++arrived;
  }
  std::printf("%lld of %lld frames arrived, %lld of them in a row\n", arrived, kSeconds * kRate, longest);
  // The server leaves out the beginning of a recording, and a busy machine a moment now and then.
  EXPECT_GT(arrived, kSeconds * kRate / 2);
  EXPECT_GT(longest, kRate / 2) << "unchanged, sample for sample";
}

TEST_F(Desktop, IsListedAndChosenWhereThereIsNoJack) {
  const Ended devices = Orbel({"devices", "--device", "nobody_is_called_so"});
  EXPECT_EQ(devices.status, 0);
  EXPECT_THAT(devices.out, testing::ContainsRegex("desktop +[^\n]+ +48000 +2 "));
  EXPECT_THAT(devices.out, HasSubstr("play would use desktop: it is the first that answers."));
}

TEST_F(Desktop, AnOutputThatIsNotThereIsSaid) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  const Ended run = Orbel({"play", files.Show(), "--output", "desktop", "--device", "trumpet"});
  EXPECT_THAT(run.messages,
              HasSubstr("There is no output \"trumpet\" on this desktop; \"orbel devices\" lists"));
}

TEST_F(Desktop, TheOutputThatIsNamedIsPlayedToAtItsOwnRate) {
  KillServer();
  StartServer({kStage, "module-null-sink sink_name=two rate=44100 sink_properties=device.description=Two"});
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  const Ended run = Orbel({"play", files.Show(), "--output", "desktop", "--device", "Two"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.messages, HasSubstr("Playing to PulseAudio \"Two\", 44100 Hz."));
}

TEST_F(Desktop, FewerOutputsThanTheShowWantsAreSaidAtTheStart) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  const Ended run = Orbel({"play", files.Show(), "--output", "desktop", "--channels", "6"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.messages,
              HasSubstr("The show wants output 6 and the device has 2: what there is is used."));
}

TEST_F(Desktop, ThatWasFoundConnectsNothingAndSaysSo) {
  ::setenv("JACK_DEFAULT_SERVER", "nobody_is_called_so", 1);
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  const Ended run = Orbel({"play", files.Show(), "--connect", "mixer:in_.*"});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr("The desktop has no ports, so nothing is connected as --connect asks. "
                                      "Start a JACK server and play again, or leave --connect out."));
}

TEST_F(Desktop, WhileTheServerHangsTheShowRunsOnAndTheKeysAreObeyed) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "desktop"});
  ASSERT_TRUE(orbel.Shows("stopped"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("playing"));
  server_->Signal(SIGSTOP);
  ASSERT_TRUE(orbel.Shows("no audio: null device"));
  ASSERT_TRUE(orbel.Shows("recovering"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("paused"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("recovering"));
  server_->Signal(SIGCONT);
  ASSERT_TRUE(orbel.Shows("sound again"));
  ASSERT_TRUE(orbel.Shows("playing"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST_F(Desktop, WhenTheServerDiesTheShowRunsOnAndSoundsAgainWithTheNextOne) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "desktop"});
  ASSERT_TRUE(orbel.Shows("stopped"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("playing"));
  KillServer();
  ASSERT_TRUE(orbel.Shows("no audio: null device"));
  ASSERT_TRUE(orbel.Shows("recovering"));
  StartServer();
  ASSERT_TRUE(orbel.Shows("sound again"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST_F(Desktop, WhenTheOnlyOutputIsUnpluggedTheShowRunsOnAndSoundsAgainWhenItIsBack) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "desktop"});
  ASSERT_TRUE(orbel.Shows("stopped"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("playing"));
  Unplug();
  ASSERT_TRUE(orbel.Shows("no audio: null device"));
  ASSERT_TRUE(orbel.Shows("recovering"));
  PlugIn();
  ASSERT_TRUE(orbel.Shows("sound again"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

constexpr char kNoOutput[] =
    "The sound of the desktop has no output. Plug a loudspeaker or a sound card in, or choose another "
    "output.";

TEST_F(Desktop, WithoutAnOutputNothingAnswers) {
  Unplug();
  const Ended devices = Orbel({"devices", "--device", "nobody_is_called_so"});
  EXPECT_EQ(devices.status, 0);
  EXPECT_THAT(devices.out, HasSubstr(std::string("desktop: ") + kNoOutput));
  EXPECT_THAT(devices.out, HasSubstr("play would use null: no sound system answers."));
}

TEST_F(Desktop, AShowThatBeginsWithoutAnOutputSoundsWhenThereIsOne) {
  Unplug();
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "desktop", "--json"});
  ASSERT_TRUE(orbel.Shows("no audio: null device. The sound of the desktop has no output."));
  PlugIn();
  ASSERT_TRUE(orbel.Shows("sound again"));
  orbel.Type("qq");
  EXPECT_TRUE(orbel.Shows("\"deviceLosses\": 0")) << "none was lost";
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST_F(Desktop, WhereThereWasNoSoundSystemTheFirstThatComesIsTaken) {
  ::setenv("JACK_DEFAULT_SERVER", "nobody_is_called_so", 1);
  KillServer();
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  const Ended devices = Orbel({"devices"});
  EXPECT_THAT(devices.out, HasSubstr("play would use null: no sound system answers. It would look for JACK, "
                                     "PulseAudio and ALSA every second."));
  OrbelInATerminal orbel({"play", files.Show(), "--connect", "mixer:in_.*"});
  ASSERT_TRUE(orbel.Shows("no audio: null device. No JACK server \"nobody_is_called_so\" answers."));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("recovering"));
  StartServer();
  ASSERT_TRUE(orbel.Shows("sound again: PulseAudio"));
  ASSERT_TRUE(orbel.Shows("The desktop has no ports, so nothing is connected as --connect asks."));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST_F(Desktop, WhileAnOutputIsLookedForItIsSaidWhatIsMissing) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "desktop"});
  ASSERT_TRUE(orbel.Shows("stopped"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("playing"));
  KillServer();
  ASSERT_TRUE(orbel.Shows("no audio: null device"));
  ASSERT_TRUE(orbel.Shows("still no audio. Neither PulseAudio nor ALSA answers."));
  StartServer({});
  ASSERT_TRUE(orbel.Shows("is not there any more. Plug it in again, or choose another output."));
  PlugIn();
  ASSERT_TRUE(orbel.Shows("sound again"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST_F(Desktop, AnOutputThatStandsInForTheUnpluggedOneIsNotPlayedTo) {
  KillServer();
  StartServer({kStage, "module-always-sink"});
  ShowFiles files;
  files.AddSong("1", "Waltz", 300);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "desktop"});
  ASSERT_TRUE(orbel.Shows("stopped"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("playing"));
  Unplug();
  ASSERT_TRUE(orbel.Shows("no audio: null device"));
  const Ended devices = Orbel({"devices", "--device", "nobody_is_called_so"});
  EXPECT_THAT(devices.out, HasSubstr("it stands in while there is no output."));
  EXPECT_THAT(devices.out, HasSubstr("play would use null: no sound system answers."));
  PlugIn();
  ASSERT_TRUE(orbel.Shows("sound again"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

}  // namespace
}  // namespace host_tests
