// How long from a command to the first frame of what it asks for, at a JACK server of its own in real time:
// orbel with a key in its terminal, beside mpv, where it is installed, with a line to its socket.
//
//   command_to_sound [TRIALS [PERIOD]]     8 of each kind, at 256 frames
//
// What plays first is above 0, where the commands lead is below: the first frame that is not above 0 any more
// nor silent is the first of what was asked for.
#include <jack/jack.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/host/show_files.h"
#include "tests/host/terminal_program.h"
#include "tests/support/jack_server.h"

namespace {

constexpr unsigned kRate = 48000;
constexpr unsigned kBars = 60;  // of a second each
constexpr auto kPatience = std::chrono::seconds(10);

// Tells when the sign that is waited for arrives. The times are those of JACK, in microseconds, of the period
// in which a frame is played.
class Listener {
 public:
  explicit Listener(const std::string& server) {
    const auto options = static_cast<jack_options_t>(JackNoStartServer | JackServerName);
    client_ = ::jack_client_open("listener", options, nullptr, server.c_str());
    if (client_ == nullptr) return;
    port_ = ::jack_port_register(client_, "in", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
    ::jack_set_process_callback(
        client_,
        [](jack_nframes_t frames, void* self) {
          static_cast<Listener*>(self)->Process_(frames);
          return 0;
        },
        this);
    ::jack_activate(client_);
  }
  ~Listener() {
    if (client_ != nullptr) ::jack_client_close(client_);
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  bool IsThere() const { return client_ != nullptr; }

  // Milliseconds from `command` until a frame of that sign; less than 0 when none comes.
  double Await(int sign, const std::function<void()>& command) {
    heardAt_ = 0;
    const jack_time_t start = ::jack_get_time();
    command();
    sign_ = sign;
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (heardAt_ == 0 && std::chrono::steady_clock::now() < deadline)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    sign_ = 0;
    return heardAt_ == 0 ? -1.0 : (static_cast<double>(heardAt_) - static_cast<double>(start)) / 1000.0;
  }

 private:
  void Process_(jack_nframes_t frames) {
    const int sign = sign_;
    if (sign == 0 || heardAt_ != 0) return;
    const auto* const in = static_cast<const float*>(::jack_port_get_buffer(port_, frames));
    for (jack_nframes_t i = 0; i < frames; ++i) {
      if (in[i] * static_cast<float>(sign) <= 0.0F) continue;
      heardAt_ = ::jack_frames_to_time(client_, ::jack_last_frame_time(client_) + i);
      return;
    }
  }

  jack_client_t* client_ = nullptr;
  jack_port_t* port_ = nullptr;
  std::atomic<int> sign_{0};
  std::atomic<jack_time_t> heardAt_{0};
};

void Report(const std::string& what, std::vector<double> milliseconds, int trials) {
  std::erase_if(milliseconds, [](double each) { return each < 0.0; });
  std::sort(milliseconds.begin(), milliseconds.end());
  if (milliseconds.empty()) {
    std::printf("%-28s nothing was heard\n", what.c_str());
    return;
  }
  const std::size_t count = milliseconds.size();
  std::printf("%-28s %6.2f ms in the middle, %6.2f to %6.2f  (%zu of %d)\n", what.c_str(),
              milliseconds[count / 2], milliseconds.front(), milliseconds.back(), count, trials);
}

// The songs: above 0 in the first half, below in the second; and below throughout.
void WriteSounds(const host_tests::ShowFiles& files) {
  std::vector<float> halves(static_cast<std::size_t>(kBars) * kRate, 0.25F);
  std::fill(halves.begin() + static_cast<long>(halves.size() / 2), halves.end(), -0.25F);
  const std::vector<float> below(halves.size(), -0.25F);
  host_tests::WriteWav(files.At("data/1 Halves.obd"), halves, kRate);
  host_tests::WriteWav(files.At("data/2 Below.obd"), below, kRate);
}

void MeasureOrbel(const host_tests::ShowFiles& files, const std::string& server, Listener* listener,
                  int trials) {
  host_tests::OrbelInATerminal orbel(
      {"play", files.Show(), "--output", "jack", "--device", server, "--connect", "listener:in"});
  if (!orbel.Shows("stopped")) return;
  std::vector<double> starts;
  std::vector<double> seeks;
  std::vector<double> songs;
  const auto type = [&](const char* keys) { return [&orbel, keys] { orbel.Type(keys); }; };
  for (int trial = 0; trial < trials; ++trial) {
    starts.push_back(listener->Await(1, type("p")));
    orbel.Shows("bar 1.2");
    seeks.push_back(listener->Await(-1, type("\x1b[C")));
    orbel.Shows("bar 31.2");
    orbel.Type("s");
    orbel.Shows("stopped");
    listener->Await(1, type("p"));
    orbel.Shows("bar 1.2");
    songs.push_back(listener->Await(-1, type("n")));
    orbel.Shows("2 Below   bar 1.1   240 bpm   playing");
    orbel.Type("s");
    orbel.Shows("stopped");
    orbel.Type("b");
    orbel.Shows("1 Halves   bar 1.1   240 bpm   stopped");
  }
  orbel.Type("q");
  orbel.WaitForEnd();
  Report("orbel: start", starts, trials);
  Report("orbel: seek while playing", seeks, trials);
  Report("orbel: next song", songs, trials);
}

// The peer, without a window, driven through its socket.
class Mpv {
 public:
  Mpv(const host_tests::ShowFiles& files, const std::string& server)
      : socketPath_(files.Beside("mpv.socket")) {
    const std::string socket = "--input-ipc-server=" + socketPath_;
    const std::string first = files.At("data/1 Halves.obd");
    const std::string second = files.At("data/2 Below.obd");
    process_ = ::fork();
    if (process_ == 0) {
      ::setenv("JACK_DEFAULT_SERVER", server.c_str(), 1);
      ::execlp("mpv", "mpv", "--no-config", "--no-video", "--really-quiet", "--no-terminal", "--pause",
               "--prefetch-playlist=yes", "--loop-playlist=inf", "--ao=jack", "--jack-port=listener:in",
               "--jack-autostart=no", socket.c_str(), first.c_str(), second.c_str(),
               static_cast<char*>(nullptr));
      ::_exit(127);
    }
    Connect_();
  }
  ~Mpv() {
    if (socket_ >= 0) ::close(socket_);
    if (process_ > 0) ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  Mpv(const Mpv&) = delete;
  Mpv& operator=(const Mpv&) = delete;

  bool IsThere() const { return socket_ >= 0; }
  void Say(const std::string& command) const {
    const std::string line = "{\"command\":[" + command + "]}\n";
    if (::write(socket_, line.data(), line.size()) < 0) std::perror("mpv");
  }

 private:
  void Connect_() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s", socketPath_.c_str());
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (std::chrono::steady_clock::now() < deadline && ::waitpid(process_, nullptr, WNOHANG) == 0) {
      const int candidate = ::socket(AF_UNIX, SOCK_STREAM, 0);
      if (::connect(candidate, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        socket_ = candidate;
        return;
      }
      ::close(candidate);
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }

  std::string socketPath_;
  pid_t process_ = -1;
  int socket_ = -1;
};

void MeasureMpv(const host_tests::ShowFiles& files, const std::string& server, Listener* listener,
                int trials) {
  const Mpv mpv(files, server);
  if (!mpv.IsThere()) {
    std::printf("mpv is not installed, or does not start\n");
    return;
  }
  std::vector<double> starts;
  std::vector<double> seeks;
  std::vector<double> songs;
  const auto say = [&](const char* command) { return [&mpv, command] { mpv.Say(command); }; };
  const auto settle = [] { std::this_thread::sleep_for(std::chrono::milliseconds(400)); };
  settle();
  for (int trial = 0; trial < trials; ++trial) {
    starts.push_back(listener->Await(1, say("\"set_property\",\"pause\",false")));
    settle();
    seeks.push_back(listener->Await(-1, say("\"seek\",40,\"absolute\"")));
    settle();
    listener->Await(1, say("\"seek\",5,\"absolute\""));
    settle();
    songs.push_back(listener->Await(-1, say("\"playlist-next\"")));
    settle();
    listener->Await(1, say("\"playlist-prev\""));
    settle();
    mpv.Say("\"set_property\",\"pause\",true");
    settle();
  }
  Report("mpv: start", starts, trials);
  Report("mpv: seek while playing", seeks, trials);
  Report("mpv: next song", songs, trials);
}

}  // namespace

int main(int argc, char** argv) {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // each line when it is known, into a file too
  const int trials = argc > 1 ? std::atoi(argv[1]) : 8;
  const unsigned period = argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 256;
  host_tests::ShowFiles files;
  files.AddSong("1", "Halves", kBars, "[[vamp]]\nfrom = \"31\"\nto = \"60\"\n");
  files.AddSong("2", "Below", kBars);
  WriteSounds(files);
  const test_support::JackServer server({.rateHz = kRate, .periodFrames = period, .outputs = 2});
  Listener listener(server.GetName());
  if (!listener.IsThere()) {
    std::fprintf(stderr, "no JACK server can be started; is jackd installed?\n");
    return 1;
  }
  std::printf("%u frames a period, %.2f ms; two of them %.2f ms\n", period, 1000.0 * period / kRate,
              2000.0 * period / kRate);
  MeasureOrbel(files, server.GetName(), &listener, trials);
  MeasureMpv(files, server.GetName(), &listener, trials);
  return 0;
}
