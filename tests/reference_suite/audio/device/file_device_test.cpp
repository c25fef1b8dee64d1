// The device that writes a file: it takes what it is told to, and tells what cannot be written.
#include "reference_suite/audio/device/file_device.h"
#include "reference_suite/audio/encode/sound_file_error.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sndfile.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/reference_suite/audio/support/await.h"
#include "tests/support/no_threads.h"
#include "tests/support/throws_with_text.h"

namespace {

using tesk_audio::FileDevice;

// Gives 1, 2, 3, ... of a thousand.
class Counting : public tesk_audio::DeviceCallback {
 public:
  void Process(float* out, std::size_t frames) noexcept override {
    awaited = false;
    for (std::size_t i = 0; i < frames; ++i) out[i] = static_cast<float>(++given) / 1000.0F;
  }
  bool IsReady(std::size_t frames) const noexcept override {
    wanted = frames;
    return ready;
  }
  bool IsAwaited() const noexcept override { return awaited; }

  std::atomic<long long> given{0};
  std::atomic<bool> ready{true};
  mutable std::atomic<std::size_t> wanted{0};
  std::atomic<bool> awaited{false};
};

// As long as it lives files of this process end there, as on a full disk.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : handler_(::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    ::signal(SIGXFSZ, handler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_{};
  sighandler_t handler_;
};

class FileDeviceTest : public testing::Test {
 protected:
  FileDeviceTest()
      : path_((std::filesystem::temp_directory_path() / ("orbel_file_device_" + std::to_string(::getpid())))
                  .string()) {}
  ~FileDeviceTest() override { std::filesystem::remove(path_); }

  std::vector<float> Written() const {
    SF_INFO info{};
    SNDFILE* const file = ::sf_open(path_.c_str(), SFM_READ, &info);
    std::vector<float> frames(static_cast<std::size_t>(info.frames));
    ::sf_readf_float(file, frames.data(), info.frames);
    ::sf_close(file);
    return frames;
  }

  const std::string path_;
  Counting callback_;
};

TEST_F(FileDeviceTest, TakesWhatItIsToldInWholePeriodsAndKeepsTheRestForLater) {
  FileDevice device(path_, 48'000.0, 1);
  device.Start(callback_);
  device.Take(0.010);
  EXPECT_EQ(callback_.given, 448) << "480 frames are seven periods of 64, and 32";
  device.Take(0.010);
  EXPECT_EQ(callback_.given, 960);
  EXPECT_FALSE(std::filesystem::exists(path_)) << "not before it is complete";
  device.Finish();
  const std::vector<float> frames = Written();
  ASSERT_EQ(frames.size(), 960U);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    ASSERT_EQ(frames[i], static_cast<float>(i + 1) / 1000.0F);
  }
}

TEST_F(FileDeviceTest, AThreadThatCannotBeStartedIsTold) {
  FileDevice device(path_, 48'000.0, 1);
  const test_support::NoThreads none;
  EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::TESKAudioError>(
      [&] { device.Start(callback_); },
      "The file output cannot start its thread: Resource temporarily unavailable. Close other programs."));
}

TEST_F(FileDeviceTest, TakesAPeriodUntoldWhenSomebodyWaitsForIt) {
  FileDevice device(path_, 48'000.0, 1);
  device.Start(callback_);
  EXPECT_EQ(callback_.given, 0);
  callback_.awaited = true;
  EXPECT_TRUE(Await([&] { return callback_.given == 64; }));
  device.Stop();
  EXPECT_EQ(callback_.given, 64);
}

TEST_F(FileDeviceTest, WaitsForFramesThatAreNotReady) {
  FileDevice device(path_, 48'000.0, 1);
  callback_.ready = false;
  device.Start(callback_);
  std::atomic<bool> taken{false};
  std::thread host([&] {
    device.Take(0.002);
    taken = true;
  });
  EXPECT_EQ(callback_.given, 0);
  EXPECT_FALSE(taken);
  callback_.ready = true;
  host.join();
  EXPECT_EQ(callback_.given, 64);
}

TEST_F(FileDeviceTest, TakesFramesOnlyWhereSomeStayThatCouldFadeOut) {
  FileDevice device(path_, 48'000.0, 1);
  device.Start(callback_);
  device.Take(0.002);
  EXPECT_EQ(callback_.given, 64);
  EXPECT_GE(callback_.wanted, 64U + 144U) << "3 ms";
}

TEST_F(FileDeviceTest, WhatCannotBeWrittenIsThrownAtTheNextTakeAndAtTheEnd) {
  const FileSizeLimit limit(100'000);
  FileDevice device(path_, 48'000.0, 1);
  device.Start(callback_);
  std::string text;
  try {
    for (int i = 0; i < 1'000; ++i) device.Take(1.0);
  } catch (const tesk_audio::SoundFileError& error) {
    text = error.what();
  }
  EXPECT_EQ(text.rfind(path_ + ": cannot be written: ", 0), 0U) << text;
  callback_.awaited = true;
  EXPECT_TRUE(Await([&] { return !callback_.awaited; })) << "whoever stops what plays is obeyed all the same";
  EXPECT_THROW(device.Finish(), tesk_audio::SoundFileError);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST(FileDeviceOfTheProcess, ThereIsNoneUntilOneIsMade) {
  EXPECT_FALSE(tesk_audio::LetFileDeviceTake(1.0));
  EXPECT_FALSE(tesk_audio::FinishFileDevice());
}

}  // namespace
