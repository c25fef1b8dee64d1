#include "suite/utility/thread_names.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <string>
#include <thread>

namespace {

std::string SystemNameOfCurrentThread() {
  char name[16] = "";
  EXPECT_EQ(pthread_getname_np(pthread_self(), name, sizeof(name)), 0);
  return name;
}

}  // namespace

TEST(ThreadNames, TheSystemShowsTheName) {
  std::thread([] {
    exc::thread_names.SetNameOfCurrentThread("file_loader12");
    EXPECT_EQ(SystemNameOfCurrentThread(), "file_loader12");
    EXPECT_EQ(exc::thread_names.GetNameOfCurrentThread(), "file_loader12");
  }).join();
}

TEST(ThreadNames, TheSystemShowsFifteenBytesOfALongName) {
  std::thread([] {
    exc::thread_names.SetNameOfCurrentThread("AudioContentDel");
    EXPECT_EQ(SystemNameOfCurrentThread(), "AudioContentDel");
    exc::thread_names.SetNameOfCurrentThread("AudioContentDeleter");
    EXPECT_EQ(SystemNameOfCurrentThread(), "AudioContentDel");
    EXPECT_EQ(exc::thread_names.GetNameOfCurrentThread(), "AudioContentDeleter");
  }).join();
}

TEST(ThreadNames, AThreadWithoutANameHasAnEmptyOne) {
  std::thread([] { EXPECT_EQ(exc::thread_names.GetNameOfCurrentThread(), ""); }).join();
}

TEST(ThreadNames, EveryThreadHasItsOwn) {
  std::thread([] {
    exc::thread_names.SetNameOfCurrentThread("outer");
    std::thread([] { exc::thread_names.SetNameOfCurrentThread("inner"); }).join();
    EXPECT_EQ(exc::thread_names.GetNameOfCurrentThread(), "outer");
  }).join();
}
