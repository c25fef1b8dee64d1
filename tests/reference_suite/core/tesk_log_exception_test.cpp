#include "suite/core/tesk_log_exception.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

#include "suite/core/log_sink.h"

namespace {

class Log : public testing::Test {
 protected:
  void SetUp() override {
    tesk_log::SetSink([this](const std::string& line) { lines_.push_back(line); });
  }
  void TearDown() override { tesk_log::SetSink({}); }

  std::vector<std::string> lines_;
};

TEST_F(Log, AnExceptionIsOneLineWithMessageFileAndLine) {
  TeskLogException("bad page", "Sources/file_loader", 12);
  EXPECT_EQ(lines_, std::vector<std::string>{"ERROR: bad page (Sources/file_loader:12)"});
}

TEST_F(Log, AMessageOfSeveralLinesIsOneLineAndCannotSteerATerminal) {
  TeskLogException("one\ntwo\r\x1b[31m\tend", "f", 1);
  EXPECT_EQ(lines_, std::vector<std::string>{"ERROR: one\\ntwo\\x0d\\x1b[31m\\tend (f:1)"});
}

TEST_F(Log, WhatTheSinkThrowsIsDropped) {
  tesk_log::SetSink([](const std::string&) { throw std::runtime_error("disk full"); });
  EXPECT_NO_THROW(TeskLogException("message", "f", 1));
}

TEST_F(Log, ASinkMayReportSomethingItself) {
  int calls = 0;
  tesk_log::SetSink([&](const std::string&) {
    if (++calls == 1) tesk_log::WriteLine("inner");
  });
  tesk_log::WriteLine("outer");
  EXPECT_EQ(calls, 2);
}

TEST_F(Log, LinesOfManyThreadsAllArrive) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (int k = 0; k < 100; ++k) TeskLogException("m", "f", k);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(lines_.size(), 400U);
}

TEST(LogWithoutSink, LinesGoToStandardError) {
  testing::internal::CaptureStderr();
  TeskLogException("bad page", "Sources/file_loader", 12);
  tesk_log::WriteLine("another");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERROR: bad page (Sources/file_loader:12)\nanother\n");
}

}  // namespace
