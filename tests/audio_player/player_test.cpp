#include "tests/audio_player/player_test.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>
#include <utility>

#include "suite/core/callback_dispatcher.h"
#include "suite/core/notification_names.h"
#include "tests/fakes/fake_log.h"
#include "tests/fakes/fake_player.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/journaling_gui_update.h"
#include "tests/fakes/scripted_show_control.h"
#include "tests/support/deleter_clock.h"
#include "tests/support/sleeping_thread.h"
#include "tests/support/staircase_content.h"
#include "tests/support/wait_until.h"

namespace {

constexpr unsigned short kPulsesPerQuarter = 480;
constexpr unsigned kMicrosecondsPerQuarter = 240000;

std::ptrdiff_t CountThreads() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return std::distance(begin(tasks), end(tasks));
}

}  // namespace

PlayerTest::PlayerTest() {
  fakes::decoder::Reset();
  fakes::player::Reset();
  fakes::show_control::Reset();
  fakes::gui_update::Reset();
  fakes::TakeLogEntries();
  fakes::TakeJournal();
  test_support::cranked::Reset();
  for (const char* number : {"1", "2", "3", "4", "5"}) SetSong(number, 0, 9600);
  show_.SetRunningOrder({"1", "2", "3", "4", "5"});
  notify::guiDispatcher.AddListener(&listener_);
  notify::callbackDispatcher.Add(&listener_, notify::names::stopped_at_end_of_song, [](void* argument) {
    fakes::Write(argument == nullptr ? "notify.EndOfSong" : "notify.EndOfSong with an argument");
  });
}

PlayerTest::~PlayerTest() {
  test_support::deleter_clock::LetGo();
  DestroyPlayer();
  notify::callbackDispatcher.Remove(&listener_);
  notify::guiDispatcher.RemoveListener(&listener_);
  EXPECT_EQ(test_support::StaircaseContent::alive, 0) << "audio that nobody has freed";
}

void PlayerTest::SetSong(const std::string& number, unsigned audioStart, unsigned audioEnd) {
  TL::Timeline timeline;
  cmn::SequenceTemplate<TL::Tempo> tempos;
  tempos.Add(TL::Tempo(0, kMicrosecondsPerQuarter));
  timeline.SetTempos(tempos);
  timeline.SetMidiEndTicks(9600);
  timeline.SetAudioStartTicks(audioStart);
  timeline.SetAudioEndTicks(audioEnd);
  show_.AddSong(tesk_midi::SongData(number, "Song", kPulsesPerQuarter, timeline));
}

AudioPlayer::SongAudioFiles PlayerTest::AudioFiles(const std::vector<std::string>& songsWithoutAudio) const {
  AudioPlayer::SongAudioFiles files;
  for (const std::string& number : show_.GetRunningOrder()) files[number] = number + " Song.obd";
  for (const std::string& number : songsWithoutAudio) files.erase(number);
  return files;
}

void PlayerTest::MakePlayer(const std::vector<std::string>& songsWithoutAudio) {
  TakePlayer(std::make_unique<AudioPlayer>("/show", show_, &changeLog_, AudioFiles(songsWithoutAudio)));
}

void PlayerTest::TakePlayer(std::unique_ptr<AudioPlayer> player) {
  player_ = std::move(player);
  threadsWithoutLoaders_ = CountThreads();
}

void PlayerTest::DestroyOwnPlayer() {
  std::atomic<pid_t> id{0};
  std::thread destroying([&] {
    id = test_support::ThisThread();
    DestroyPlayer();
  });
  while (id == 0) std::this_thread::yield();
  EXPECT_TRUE(test_support::WaitUntilItSleeps(id)) << "it waits for the deleter";
  test_support::deleter_clock::LetGo();
  destroying.join();
}

void PlayerTest::LoadReady(const std::string& song) {
  if (player_ == nullptr) MakePlayer();
  player_->LoadSong(song);
  ASSERT_TRUE(AwaitLoaders());
  Told();
}

void PlayerTest::LoadReadyWithBrokenNeighbour(const std::string& song, const std::string& neighbour,
                                              fakes::decoder::ErrorKind kind, const std::string& text) {
  MakePlayer();
  fakes::decoder::FailDecode(Path(neighbour), kind, text);
  fakes::decoder::HoldLoader(Path(neighbour));
  player_->LoadSong(song);
  ASSERT_EQ(test_support::cranked::CountCreated(), 1);
  fakes::decoder::ReleaseLoader(Path(neighbour));
  ASSERT_TRUE(AwaitLoaders());
  Told();
}

void PlayerTest::LoadAndPlay(const std::string& song) {
  LoadReady(song);
  player_->Play();
  Told();
}

std::string PlayerTest::Path(const std::string& song) {
  return "/show/data/" + song + " Song.obd";
}

bool PlayerTest::AwaitLoaders() {
  return test_support::WaitUntil([this] { return CountThreads() <= threadsWithoutLoaders_; });
}

bool PlayerTest::PlayerLockIsFree() {
  bool taken = false;
  std::thread([&] {
    const auto tryOnce = [&] {
      if (player_->TryLock()) {
        taken = true;
        player_->Unlock();
      }
      return taken;
    };
    test_support::WaitUntil(tryOnce, std::chrono::seconds(1));
  }).join();
  return taken;
}

Journal PlayerTest::Told() {
  return fakes::TakeJournal();
}

Journal PlayerTest::Told(const std::string& who) {
  Journal journal = Told();
  std::erase_if(journal, [&](const std::string& entry) { return entry.rfind(who + ".", 0) != 0; });
  return journal;
}

void PlayerTest::Listener::OnPlaybackStarted() {
  fakes::Write("notify.PlaybackStarted");
}
void PlayerTest::Listener::OnPlaybackPaused() {
  fakes::Write("notify.PlaybackPaused");
}
void PlayerTest::Listener::OnPlaybackStopped() {
  fakes::Write("notify.PlaybackStopped");
}
void PlayerTest::Listener::OnPlayerException() {
  fakes::Write("notify.PlayerException");
}
void PlayerTest::Listener::OnSongLoaded(const std::string& songNumber) {
  fakes::Write("notify.SongLoaded " + songNumber);
}
