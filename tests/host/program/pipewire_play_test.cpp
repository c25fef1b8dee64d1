// The program against a real PipeWire server without hardware, through its JACK library. The tests start the
// server themselves, and are skipped where it is not installed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/host/run_orbel.h"
#include "tests/host/show_files.h"
#include "tests/host/started.h"
#include "tests/support/temporary_folder.h"

namespace host_tests {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr unsigned kRate = 48'000;

// What a command of the shell prints.
std::string OutputOf(const std::string& command) {
  std::string output;
  std::FILE* const pipe = ::popen((command + " 2>/dev/null").c_str(), "r");
  if (pipe == nullptr) return "";
  char buffer[256];
  while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) output += buffer;
  ::pclose(pipe);
  return output;
}

template <typename Condition>
bool Await(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

class PipeWire : public testing::Test {
 protected:
  void SetUp() override {
    // It is not among the packages: a session manager takes hold of the sound cards of who installs it. There
    // is nothing to stand in for a server.
    for (const char* const program :
         {"pipewire", "wireplumber", "pw-cli", "pw-jack", "jack_lsp", "dbus-daemon"}) {
      if (OutputOf(std::string("command -v ") + program).empty()) GTEST_SKIP() << program << " is not here";
    }
    ::setenv("XDG_RUNTIME_DIR", folder_.Path().c_str(), 1);
    ::setenv("HOME", folder_.Path().c_str(), 1);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + folder_.Path("bus")).c_str(), 1);
    ::setenv("PIPEWIRE_QUANTUM", "256/48000", 1);
    // Where its JACK library is, for the programs that are started from now on.
    std::string libraries = OutputOf("pw-jack printenv LD_LIBRARY_PATH");
    while (!libraries.empty() && libraries.back() == '\n') libraries.pop_back();
    ::setenv("LD_LIBRARY_PATH", libraries.c_str(), 1);
    bus_ = std::make_unique<Started>(std::vector<std::string>{
        "dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=unix:path=" + folder_.Path("bus")});
    ASSERT_TRUE(StartServer());
  }

  // With one output that nobody hears, "stage". False when it does not come up.
  bool StartServer() {
    server_ = std::make_unique<Started>(std::vector<std::string>{"pipewire"});
    const bool answers = Await([this] { return std::filesystem::exists(folder_.Path("pipewire-0")); });
    manager_ = std::make_unique<Started>(std::vector<std::string>{"wireplumber"});
    const std::string stage =
        "{ factory.name=support.null-audio-sink node.name=stage media.class=Audio/Sink object.linger=true "
        "audio.position=[FL FR] audio.rate=48000 }";
    return answers && Await([&] {
             return Started({"pw-cli", "create-node", "adapter", stage}).Wait();
           }) &&
           Await([] { return OutputOf("jack_lsp").find("stage:playback_FR") != std::string::npos; });
  }
  void KillServer() {
    server_->End(SIGKILL);
    manager_.reset();
    std::filesystem::remove(folder_.Path("pipewire-0"));
  }

 private:
  test_support::TemporaryFolder folder_;
  std::unique_ptr<Started> bus_;
  std::unique_ptr<Started> server_;
  std::unique_ptr<Started> manager_;
};

void AddSong(ShowFiles* files, unsigned bars) {
  files->AddSong("1", "Waltz", bars);
  WriteWav(files->At("data/1 Waltz.obd"), std::vector<float>(std::size_t{2} * bars * kRate, 0.25F), kRate, 2);
}

TEST_F(PipeWire, AShowPlaysToItsEndAndIsHeard) {
  ShowFiles files;
  AddSong(&files, 3);
  const Ended run = Orbel({"play", files.Show(), "--output", "jack", "--json"});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr("Playing to JACK server \"default\", 48000 Hz, 256 frames a period."));
  EXPECT_THAT(run.messages, Not(HasSubstr("nobody hears")));
  EXPECT_THAT(run.out, HasSubstr("\"state\": \"ended\""));
  EXPECT_THAT(run.out, HasSubstr("\"position\": \"4.1\""));
  EXPECT_THAT(run.out, HasSubstr("\"unheard\": \"\""));
  EXPECT_THAT(run.out, HasSubstr("\"deviceLosses\": 0"));
  EXPECT_THAT(run.out, HasSubstr("0.25,\n    0.25\n"));
}

// It tells nobody that it dies, and its outputs come a moment after it answers again.
TEST_F(PipeWire, BehindAServerThatIsKilledTheShowSoundsAgain) {
  ShowFiles files;
  AddSong(&files, 120);
  RunningOrbel orbel({"play", files.Show(), "--output", "jack", "--json"});
  ASSERT_TRUE(orbel.Says("Playing to JACK server \"default\""));
  ASSERT_TRUE(orbel.Says("playing"));
  KillServer();
  ASSERT_TRUE(orbel.Says("it has stopped to ask for sound. The show runs on unheard"));
  const auto begin = std::chrono::steady_clock::now();
  ASSERT_TRUE(StartServer());
  const bool cameAtOnce = std::chrono::steady_clock::now() - begin < std::chrono::seconds(2);
  ASSERT_TRUE(orbel.Says("sound again: JACK server \"default\""));
  orbel.Signal(SIGINT);
  ASSERT_TRUE(orbel.Says("once more ends it"));
  orbel.Signal(SIGINT);
  const Ended run = orbel.WaitForEnd();
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.out, HasSubstr("\"deviceLosses\": 1"));
  EXPECT_THAT(run.out, HasSubstr("\"unheard\": \"\""));
  if (cameAtOnce) {
    EXPECT_THAT(run.messages, Not(HasSubstr("nobody hears"))) << "what was connected is waited for";
  }
}

}  // namespace
}  // namespace host_tests
