// Songs that turn out to be broken one after the other, each at the moment at which the one before it has
// been left out. __wrap_pread stands in for the program's pread, and __real_pread is the system's.
#include <gtest/gtest.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

#include "host/session/session.h"
#include "suite/core/gui_dispatcher.h"
#include "tests/host/show_files.h"
#include "tests/support/wait_until.h"

namespace {

// Behind what is read of a file to look at it.
constexpr off_t kDecodedFrom = 100'000;

// Songs from this one on are not decoded yet. Those called Polka are broken.
std::atomic<int> heldFrom{0};

int NumberIn(const std::string& path) {
  return std::atoi(std::filesystem::path(path).filename().c_str());
}

std::string PathOf(int descriptor) {
  std::error_code unknown;
  return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), unknown).string();
}

}  // namespace

extern "C" {

ssize_t __real_pread(int descriptor, void* bytes, size_t count, off_t offset);

ssize_t __wrap_pread(int descriptor, void* bytes, size_t count, off_t offset) {
  if (offset < kDecodedFrom) return __real_pread(descriptor, bytes, count, offset);
  const std::string path = PathOf(descriptor);
  EXPECT_TRUE(test_support::WaitUntil([&] { return NumberIn(path) < heldFrom; })) << path;
  if (path.find("Polka") != std::string::npos) {
    errno = EIO;
    return -1;
  }
  return __real_pread(descriptor, bytes, count, offset);
}
}

namespace orbel::host {
namespace {

using host_tests::ShowFiles;

// The last that a session does before it has a fresh player play: it brings it to where the one before stood.
class AtPlace : public notify::GuiListener {
 public:
  AtPlace(TickIndex place, std::function<void()> act) : place_(place), act_(std::move(act)) {
    notify::guiDispatcher.AddListener(this);
  }
  ~AtPlace() override { notify::guiDispatcher.RemoveListener(this); }
  AtPlace(const AtPlace&) = delete;
  AtPlace& operator=(const AtPlace&) = delete;

  void OnPosition(const notify::PositionUpdate& update) override {
    if (std::this_thread::get_id() != host_ || update.tickIndex != place_ || acted) return;
    acted = true;
    act_();
  }

  std::atomic<bool> acted{false};

 private:
  const std::thread::id host_ = std::this_thread::get_id();
  const TickIndex place_;
  const std::function<void()> act_;
};

bool IsLeftOut(const Session& session, const std::string& song) {
  for (const tesk_midi::Problem& problem : session.GetProblems()) {
    if (problem.songNumber == song && !problem.isWarning) return true;
  }
  return false;
}

TEST(BrokenInARow, ASongThatFailsRightBeforeTheFreshPlayerPlaysIsLeftOutToo) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 8);
  files.AddSong("2", "Polka A", 8);
  files.AddSong("3", "Polka B", 8);
  files.AddSong("4", "March", 8);
  heldFrom = 2;
  Session session(files.Show(), "", OutputKind::Offline, OutputChoice{});
  session.Do({CommandKind::Play, 0.0, ""});
  Step step;
  while (session.GetTick() < 480) ASSERT_TRUE(RenderStep(&step, [](const float*, std::size_t) {}));
  // Where the performer stands is kept for who had paused.
  session.Do({CommandKind::Pause, 0.0, ""});
  const TickIndex place = session.GetTick();
  heldFrom = 3;
  ASSERT_TRUE(test_support::WaitUntil([&] { return !session.WhatFailedToLoad().empty(); })) << "song 2";
  AtPlace before(place, [&] {
    EXPECT_EQ(session.WhatFailedToLoad(), "") << "a fresh player";
    heldFrom = 5;
    EXPECT_TRUE(test_support::WaitUntil([&] { return !session.WhatFailedToLoad().empty(); })) << "song 3";
  });
  session.Do({CommandKind::Play, 0.0, ""});
  EXPECT_TRUE(before.acted);
  EXPECT_TRUE(session.IsPlaying());
  EXPECT_EQ(session.GetSongNumber(), "1");
  EXPECT_EQ(session.GetTick(), place);
  EXPECT_TRUE(IsLeftOut(session, "2"));
  EXPECT_TRUE(IsLeftOut(session, "3"));
  EXPECT_FALSE(IsLeftOut(session, "4"));
}

}  // namespace
}  // namespace orbel::host
