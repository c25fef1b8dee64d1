// What the player asks of the system about its loader threads: these calls are watched by this program.
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <stdexcept>

#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"

namespace {

std::atomic<int> detachedThreads{0};

// A wait of this thread may end early, as the system's may: the first one does then, and there must be no
// second.
thread_local bool wakesEarly = false;
thread_local int waits = 0;

}  // namespace

// The names are the linker's: __wrap_X stands in for X, __real_X is X.
extern "C" {

int __real_pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex);
int __real_pthread_detach(pthread_t thread);
int __wrap_pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex);
int __wrap_pthread_detach(pthread_t thread);

int __wrap_pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
  if (!wakesEarly) return __real_pthread_cond_wait(condition, mutex);
  if (++waits > 1) throw std::logic_error("waited again");
  return 0;
}

int __wrap_pthread_detach(pthread_t thread) {
  ++detachedThreads;
  return __real_pthread_detach(thread);
}
}

namespace {

class LoaderThreads : public PlayerTest {
 protected:
  LoaderThreads() {
    detachedThreads = 0;
    wakesEarly = false;
    waits = 0;
  }
};

// Deliberate: one wait and no loop. Whoever is woken takes what there is, also before any loader's report.
TEST_F(LoaderThreads, WhoeverIsWokenEarlyDoesNotWaitAgain) {
  MakePlayer();
  wakesEarly = true;
  EXPECT_FALSE(GetPlayer().GetFileLoaderErrorOccurred());
  EXPECT_EQ(waits, 1);
  waits = 0;
  EXPECT_NO_THROW(GetPlayer().ThrowIfThreadExceptions());
  EXPECT_EQ(waits, 1);
  wakesEarly = false;
}

// Deliberate: only who joins such a thread may delete its record.
TEST_F(LoaderThreads, OneThatNobodyWaitsForIsLeftAlone) {
  MakePlayer();
  fakes::decoder::HoldLoader(Path("2"));
  GetPlayer().LoadSong("1");  // joins the loader of 1
  ASSERT_TRUE(fakes::decoder::WaitUntilHeld(Path("2")));
  fakes::decoder::ReleaseLoader(Path("2"));
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_EQ(detachedThreads, 0);
}

TEST_F(LoaderThreads, OneThatIsAwaitedIsDetachedWhenItIsDone) {
  LoadReady("1");
  fakes::decoder::HoldLoader(Path("4"));
  GetPlayer().LoadSong("4");
  ASSERT_TRUE(fakes::decoder::WaitUntilHeld(Path("4")));
  fakes::decoder::ReleaseLoader(Path("4"));
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_EQ(detachedThreads, 1) << "not those of its neighbours";
}

TEST_F(LoaderThreads, OneThatFailsIsDetachedAlsoWhenNobodyWaits) {
  MakePlayer();
  fakes::decoder::FailDecode(Path("2"), fakes::decoder::ErrorKind::Content, "not audio");
  fakes::decoder::HoldLoader(Path("2"));
  GetPlayer().LoadSong("1");
  ASSERT_TRUE(fakes::decoder::WaitUntilHeld(Path("2")));
  fakes::decoder::ReleaseLoader(Path("2"));
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_EQ(detachedThreads, 1);
}

}  // namespace
