#include "host/session/console_lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <thread>

#include "exc/console/cout_buffer.h"
#include "host/session/results.h"
#include "suite/core/log_sink.h"

namespace orbel::host {
namespace {

using testing::ElementsAre;

class ConsoleLines : public testing::Test {
 protected:
  ConsoleLines() : before_(std::cout.rdbuf()), errorBefore_(std::cerr.rdbuf(error_.rdbuf())) {
    SeparateConsoleFromResults();
  }
  ~ConsoleLines() override {
    std::cout.rdbuf(before_);
    std::cerr.rdbuf(errorBefore_);
    tesk_log::SetSink({});
  }

  std::streambuf* const before_;
  std::ostringstream error_;
  std::streambuf* const errorBefore_;
};

TEST_F(ConsoleLines, AreMessagesAndNoResults) {
  testing::internal::CaptureStdout();
  Results() << "result\n" << std::flush;
  exc::CoutBuffer() << "WARNING: something" << exc::EndlT();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "result\n");
  EXPECT_THAT(error_.str(), testing::HasSubstr("WARNING: something\n"));
}

TEST_F(ConsoleLines, AreNotWhatADisplayAlwaysHears) {
  exc::CoutBuffer()
      << "[Warning] SamplesTicksConverter::tickIndexByElapsedSampleCount_ is empty. Returning 0."
      << exc::EndlT();
  EXPECT_EQ(error_.str(), "");
}

TEST_F(ConsoleLines, OfARecordingAreInTheWordsOfTheCheck) {
  HeldConsoleLines held;
  const std::string end = "; it plays like that, or export the recording again";
  std::cout << "WARNING: /a/data/show/data/1 A.obd: only 61440 of 192000 frames could be decoded.\n"
               "WARNING: show/data/1 A.obd.obd: one thing: another.\n"
               "WARNING: show/data/1 A.obd: its 44100 Hz are resampled to 48000 Hz.\n"
               "WARNING: 1 A.obd: not in a show.\n"
               "WARNING: show/data/1 A.mid: no recording.\n"
               "ERROR: show/data/1 A.obd: no warning.\n";
  EXPECT_THAT(held.Take(),
              ElementsAre("warning: data/1 A.obd: only 61440 of 192000 frames could be decoded" + end,
                          "warning: data/1 A.obd.obd: one thing: another" + end,
                          "warning: data/1 A.obd: its 44100 Hz are resampled to 48000 Hz.",
                          "WARNING: 1 A.obd: not in a show.", "WARNING: show/data/1 A.mid: no recording.",
                          "ERROR: show/data/1 A.obd: no warning."));
}

TEST_F(ConsoleLines, AreWhatGoesIntoTheLogToo) {
  tesk_log::WriteLine("ERROR: something");
  EXPECT_THAT(error_.str(), testing::HasSubstr("ERROR: something\n"));
  HeldConsoleLines held;
  tesk_log::WriteLine("ERROR: in the middle of a performance");
  EXPECT_THAT(held.Take(), ElementsAre("ERROR: in the middle of a performance"));
}

TEST_F(ConsoleLines, AreKeptWholeWhileHeld) {
  HeldConsoleLines held;
  std::cout << "half";
  EXPECT_THAT(held.Take(), ElementsAre());
  std::cout << " a line\nanother";
  EXPECT_THAT(held.Take(), ElementsAre("half a line"));
  std::cout.put('\n');
  EXPECT_THAT(held.Take(), ElementsAre("another"));
  EXPECT_EQ(error_.str(), "");
}

TEST_F(ConsoleLines, ThatNobodyTookAreWrittenInTheEnd) {
  {
    HeldConsoleLines held;
    std::cout << "one\ntwo\n";
    EXPECT_EQ(error_.str(), "");
  }
  EXPECT_THAT(error_.str(), testing::HasSubstr("one\n"));
  EXPECT_THAT(error_.str(), testing::EndsWith("two\n"));
}

TEST_F(ConsoleLines, OfManyThreadsAllArrive) {
  HeldConsoleLines held;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([] {
      for (int line = 0; line < 500; ++line) exc::CoutBuffer() << "a line" << exc::EndlT();
    });
  }
  std::vector<std::string> taken = held.Take();
  for (std::thread& thread : threads) thread.join();
  for (std::string& line : held.Take()) taken.push_back(std::move(line));
  EXPECT_EQ(taken, std::vector<std::string>(2000, "a line"));
}

}  // namespace
}  // namespace orbel::host
