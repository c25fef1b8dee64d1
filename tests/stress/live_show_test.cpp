// A show of real files on the live output, with a host that never makes up its mind and takes no heed of how
// the music goes on: other tempos and keys, seeks, songs, pauses, and a JACK server that is killed, ended and
// hung meanwhile. Whatever has happened, from where the host then starts every frame is the song's, and a
// show whose device was away is where the clock says.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "reference_suite/audio/output/output_settings.h"
#include "suite/core/callback_dispatcher.h"
#include "suite/core/device_update.h"
#include "suite/core/notification_names.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/scenarios/show_on_disk.h"
#include "tests/stress/display.h"
#include "tests/support/jack_recorder.h"
#include "tests/support/jack_server.h"

namespace stress {
namespace {

using scenarios::SongPlan;
using test_support::JackRecorder;
using test_support::JackServer;
using Random = std::mt19937;

constexpr unsigned kRate = 48'000;
constexpr unsigned kBeat = 480;            // ticks
constexpr long long kBeatFrames = 12'000;  // at 240 beats a minute
constexpr double kTickSeconds = 0.25 / kBeat;
constexpr unsigned kNoSongIsLonger = 480 * kBeat;
constexpr unsigned kShortSong = 24;  // beats

SongPlan Song(unsigned beats, long long firstValue) {
  SongPlan song;
  song.division = kBeat;
  song.tempos = {{0, 250'000}};
  song.midiEnd = beats * kBeat;
  song.audioFrames = beats * kBeatFrames;
  song.firstValue = firstValue;
  return song;
}

// Two minutes with a repeat of beats 8 and 9, and beat 11 cut out; a vamp, on into a caesura. Every frame of
// every song has a number of its own.
std::vector<SongPlan> Songs() {
  constexpr long long kShortFrames = kShortSong * kBeatFrames;
  std::vector<SongPlan> songs{Song(480, 0), Song(kShortSong, 6'000'000),
                              Song(kShortSong, 6'000'000 + kShortFrames)};
  songs[0].loops = {{8 * kBeat, 10 * kBeat, scenarios::LoopKind::Repeat, 2, scenarios::Exit::End}};
  songs[0].cuts = {{11 * kBeat, 12 * kBeat}};
  songs[1].loops = {{2 * kBeat, 4 * kBeat, scenarios::LoopKind::Vamp, 0, scenarios::Exit::Beat}};
  songs[1].attacca = true;
  songs[2].caesuras = {6 * kBeat};
  return songs;
}

unsigned Below(Random& random, unsigned limit) {
  return static_cast<unsigned>(random()) % limit;
}

// What becomes of the device.
class DeviceNews {
 public:
  DeviceNews() {
    notify::callbackDispatcher.Add(this, notify::names::audio_device_changed, [this](void* update) {
      isAway_ = static_cast<const notify::DeviceUpdate*>(update)->recovering;
    });
  }
  ~DeviceNews() { notify::callbackDispatcher.Remove(this); }
  DeviceNews(const DeviceNews&) = delete;
  DeviceNews& operator=(const DeviceNews&) = delete;
  bool IsAway() const { return isAway_; }

 private:
  std::atomic<bool> isAway_{false};
};

void DoAnything(AudioPlayer& player, Random& random) {
  switch (Below(random, 14)) {
    case 0:
    case 1:
      return player.Play();
    case 2:
      return player.Pause();
    case 3:
      return player.Stop();
    case 4:
      return player.Seek(Below(random, kShortSong * kBeat));
    case 5:
      return player.SetTempoScale(0.5 + 0.1 * Below(random, 16));
    case 6:
      return player.SetTransposition(static_cast<int>(Below(random, 25)) - 12);
    case 7:
      player.SetTempoScale(1.0);
      return player.SetTransposition(0);
    case 8:
      player.NextSong();
      return;
    case 9:
      return player.PreviousSong();
    case 10:
      return player.LoadSong(std::to_string(1 + Below(random, 3)));
    case 11:
      player.FlowControlExit();
      player.Continue();
      return;
    default:
      std::this_thread::sleep_for(std::chrono::microseconds(Below(random, 20'000)));
  }
}

// Silent, at that beat of the first song, as written.
void StandAt(AudioPlayer& player, unsigned beat) {
  player.SetTempoScale(1.0);
  player.SetTransposition(0);
  player.LoadSong("1");
  // Behind its loader, which may begin to play.
  player.Play();
  player.StopAndReset();
  player.Seek(beat * kBeat);
}

// A stretched ramp is no staircase, but it does not leave the scale.
void ExpectSound(const JackRecorder& recorder) {
  for (const float sample : recorder.GetFrames()) {
    ASSERT_TRUE(std::isfinite(sample));
    ASSERT_LE(std::fabs(sample), 1.0F);
  }
}

// Where the numbers of the frames do not go on by one; silences are passed over.
std::vector<std::string> Breaks(const std::vector<float>& frames) {
  std::vector<std::string> breaks;
  double before = -2.0;
  for (const float sample : frames) {
    const double number = static_cast<double>(sample) * 8'388'608.0;
    if (number == 0.0) continue;
    const auto text = [](double value) { return std::to_string(std::llround(value)); };
    if (number != std::floor(number)) return {"no frame of the song: " + std::to_string(number)};
    if (number != before + 1.0) breaks.push_back(text(before) + " > " + text(number));
    before = number;
  }
  return breaks;
}

std::string Jump(long long fromBeat, long long toBeat) {
  return std::to_string(fromBeat * kBeatFrames - 1) + " > " + std::to_string(toBeat * kBeatFrames);
}

// Without a clock, so that nothing can be lost: repeat, cut, a pause on the way, and a seek at the end.
void ExpectEveryFrame(AudioPlayer& player, const std::string& server) {
  StandAt(player, 7);
  JackRecorder recorder(server, 3'000'000);
  ASSERT_TRUE(Await([&] { return !recorder.GetSources().empty(); })) << "connected by name";
  recorder.SetFreewheel(true);
  const auto hears = [&](std::size_t more) {
    const std::size_t wanted = recorder.GetCount() + more;
    return Await([&] { return recorder.GetCount() >= wanted; });
  };
  player.Play();
  ASSERT_TRUE(hears(20'000));
  player.Pause();
  player.Play();
  ASSERT_TRUE(hears(100'000));
  player.Seek(200 * kBeat);
  ASSERT_TRUE(hears(20'000));
  player.Stop();
  recorder.SetFreewheel(false);
  const std::vector<std::string> breaks = Breaks(recorder.GetFrames());
  ASSERT_EQ(breaks.size(), 4U) << testing::PrintToString(breaks);
  EXPECT_EQ(breaks[0], "-2 > " + std::to_string(7 * kBeatFrames)) << "from where the host starts";
  EXPECT_EQ(breaks[1], Jump(10, 8)) << "the repeat, once, whatever was played before";
  EXPECT_EQ(breaks[2], Jump(11, 12)) << "the cut";
  const std::string target = " > " + std::to_string(200 * kBeatFrames);
  EXPECT_EQ(breaks[3].substr(breaks[3].find(" > ")), target) << "the seek: " << breaks[3];
}

// The listener's place in the music and the clock, at one moment.
struct Moment {
  double place = 0.0;  // seconds as recorded
  std::chrono::steady_clock::time_point time = std::chrono::steady_clock::now();
};

Moment MomentOf(AudioPlayer& player) {
  unsigned tick = 0;
  Moment moment;
  player.GetAudibleTickIndex(&tick);
  moment.place = tick * kTickSeconds;
  return moment;
}

// Seconds by which the music has gone on further than it should have.
double Ahead(const Moment& before, const Moment& now, double scale) {
  return now.place - before.place - scale * std::chrono::duration<double>(now.time - before.time).count();
}

// It plays, faster and higher than written, at beat 22 or behind it.
bool PlaysOtherwise(AudioPlayer& player, double scale) {
  StandAt(player, 20);
  player.SetTempoScale(scale);
  player.SetTransposition(2);
  player.Play();
  return Await([&] { return MomentOf(player).place > 22 * 0.25; });
}

// One that is held up by the machine falls behind what the clock says, and is looked at again.
bool IsInStep(AudioPlayer& player, const Moment& before, double scale) {
  return Await([&] { return std::fabs(Ahead(before, MomentOf(player), scale)) < 0.5; });
}

struct Outage {
  int signal;
  unsigned periodAfter;
};

class JackStage {
 public:
  JackStage() {
    tesk_audio::OutputSettings settings;
    settings.device = tesk_audio::DeviceKind::Jack;
    settings.deviceName = name_;
    settings.connect = {"recorder:in_1", "system:playback_1"};
    settings.crossfadeMs = settings.fadeMs = 0.0;
    tesk_audio::ConfigureOutput(settings);
  }

  // The server is away while the show plays, and comes back.
  void BeAwayOnce(AudioPlayer& player, const DeviceNews& news, const Outage& outage) {
    constexpr double kScale = 1.25;
    ASSERT_TRUE(PlaysOtherwise(player, kScale));
    const Moment before = MomentOf(player);
    if (outage.signal == SIGSTOP) {
      server_->Signal(SIGSTOP);
    } else {
      server_->End(outage.signal);
    }
    ASSERT_TRUE(Await([&] { return news.IsAway(); })) << "told that it is lost";
    EXPECT_TRUE(IsInStep(player, before, kScale)) << "the show runs on";
    if (outage.signal == SIGSTOP) {
      server_->Signal(SIGCONT);
    } else {
      server_ = std::make_unique<JackServer>(JackServer::Shape{.periodFrames = outage.periodAfter}, name_);
    }
    ASSERT_TRUE(Await([&] { return !news.IsAway(); })) << "found again";
    EXPECT_TRUE(IsInStep(player, before, kScale)) << Ahead(before, MomentOf(player), kScale);
    EXPECT_EQ(player.GetCurrentSongNumber(), "1");
    EXPECT_TRUE(player.IsPlaying());
    const JackRecorder recorder(name_, 10'000);
    EXPECT_TRUE(Await([&] { return recorder.IsFull(); })) << "heard again";
    ExpectSound(recorder);
  }

  const std::string& GetServer() const { return name_; }

 private:
  const std::string name_ = JackServer::NewName();
  std::unique_ptr<JackServer> server_ = std::make_unique<JackServer>(JackServer::Shape{}, name_);
};

TEST(LiveShow, OnAJackServerThatComesAndGoesEveryFrameIsInItsPlace) {
  const scenarios::ShowOnDisk show(Songs(), kRate);
  JackStage stage;
  const DeviceNews news;
  AudioPlayerWrapper wrapper(show.Path().string(), "");
  AudioPlayer& player = *wrapper.GetPlayer();
  ASSERT_FALSE(news.IsAway());
  Random random(20'260);
  for (const Outage& outage :
       {Outage{SIGKILL, 128}, Outage{SIGTERM, 1024}, Outage{SIGSTOP, 0}, Outage{SIGKILL, 64}}) {
    {
      const JackRecorder recorder(stage.GetServer(), 2'000'000);
      const Display display(&player, kNoSongIsLonger);
      for (int i = 0; i < 150; ++i) DoAnything(player, random);
      player.Stop();
      ExpectSound(recorder);
    }
    ExpectEveryFrame(player, stage.GetServer());
    if (HasFatalFailure()) return;
    {
      const Display display(&player, kNoSongIsLonger);
      stage.BeAwayOnce(player, news, outage);
      if (HasFatalFailure()) return;
    }
    ExpectEveryFrame(player, stage.GetServer());
    if (HasFatalFailure()) return;
  }
}

TEST(LiveShow, OnTheNullDeviceItIsWhereTheClockSays) {
  const scenarios::ShowOnDisk show(Songs(), kRate);
  tesk_audio::OutputSettings settings;
  settings.periodFrames = 64;
  tesk_audio::ConfigureOutput(settings);
  AudioPlayerWrapper wrapper(show.Path().string(), "");
  AudioPlayer& player = *wrapper.GetPlayer();
  const Display display(&player, kNoSongIsLonger);
  Random random(20'261);
  for (const double scale : {0.5, 1.25, 2.0}) {
    for (int i = 0; i < 150; ++i) DoAnything(player, random);
    ASSERT_TRUE(PlaysOtherwise(player, scale));
    const Moment before = MomentOf(player);
    ASSERT_TRUE(Await([&] { return MomentOf(player).place > 26 * 0.25; }));
    EXPECT_TRUE(IsInStep(player, before, scale)) << Ahead(before, MomentOf(player), scale);
    const Moment paused = MomentOf(player);
    player.Pause();
    player.Play();
    ASSERT_TRUE(Await([&] { return MomentOf(player).place > paused.place; }));
    EXPECT_TRUE(IsInStep(player, paused, scale)) << "from where it was heard last";
    player.Stop();
  }
}

}  // namespace
}  // namespace stress
