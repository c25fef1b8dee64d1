#include "exc/console/cout_buffer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ios>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "tests/exc/console/counting_buffer.h"
#include "tests/support/cout_capture.h"

using test_support::CoutCapture;

namespace {

const std::string kWrittenBeforeMain = [] {
  CoutCapture capture;
  exc::CoutBuffer() << "first" << exc::EndlT();
  return capture.Text();
}();

// Writes a line when the static objects go, if told to.
struct LateWriter {
  ~LateWriter() {
    if (isArmed) exc::CoutBuffer() << "written after main" << exc::EndlT();
  }
  bool isArmed = false;
} lateWriter;

}  // namespace

TEST(CoutBuffer, MayBeUsedBeforeMain) {
  EXPECT_EQ(kWrittenBeforeMain, "first\n");
}

TEST(CoutBufferDeathTest, MayBeUsedAfterMain) {
  const auto leave = [] {
    std::cout.rdbuf(std::cerr.rdbuf());
    lateWriter.isArmed = true;
    std::exit(0);
  };
  EXPECT_EXIT(leave(), testing::ExitedWithCode(0), "written after main");
}

TEST(CoutBuffer, WritesOneLinePerTemporary) {
  CoutCapture capture;
  exc::CoutBuffer() << "WARNING: song " << std::string("12") << " lacks " << 3 << " of " << 4u
                    << exc::EndlT();
  EXPECT_EQ(capture.Text(), "WARNING: song 12 lacks 3 of 4\n");
}

TEST(CoutBuffer, TakesTheSameTypesAsEveryOutBuffer) {
  CoutCapture capture;
  exc::CoutBuffer() << "text " << std::string("string ") << -1LL << " " << 2u << " "
                    << static_cast<unsigned short>(3) << " " << 4ul << " " << std::hex << 255u << std::dec
                    << " " << 5 << " " << 0.5 << " " << 1.5L << " " << 'c' << exc::EndlT();
  EXPECT_EQ(capture.Text(), "text string -1 2 3 4 ff 5 0.5 1.5 c\n");
}

TEST(CoutBuffer, EndlEndsTheLineAndDoesNotFlush) {
  CountingBuffer console;
  std::streambuf* const before = std::cout.rdbuf(&console);
  {
    exc::CoutBuffer buffer;
    buffer << "a" << exc::EndlT() << "b" << exc::EndlT();
    EXPECT_EQ(buffer.str(), "a\nb\n");
    EXPECT_EQ(console.writes.size(), 0u);
    EXPECT_EQ(console.flushes, 0);
  }
  std::cout.rdbuf(before);
  EXPECT_EQ(console.writes, std::vector<std::string>{"a\nb\n"});
  EXPECT_EQ(console.flushes, 1) << "the destructor's";
}

TEST(CoutBuffer, EndlIsEmpty) {
  EXPECT_TRUE(std::is_empty_v<exc::EndlT>);
}

// Deliberate: commit() leaves the text in the buffer.
TEST(CoutBuffer, FlushedByHandAndThenDestroyedWritesItsLineTwice) {
  CoutCapture capture;
  {
    exc::CoutBuffer buffer;
    buffer << "NOTICE: twice" << exc::EndlT();
    buffer.flush();
    EXPECT_EQ(capture.Text(), "NOTICE: twice\n");
  }
  EXPECT_EQ(capture.Text(), "NOTICE: twice\nNOTICE: twice\n");
}

TEST(CoutBuffer, LinesOfDifferentThreadsNeverInterleave) {
  constexpr int kThreads = 4;
  constexpr int kLines = 250;
  SlowBuffer console;
  std::streambuf* const before = std::cout.rdbuf(&console);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([i] {
      for (int line = 0; line < kLines; ++line) {
        exc::CoutBuffer() << "thread " << i << " line " << line << " of " << std::string("its") << " own"
                          << exc::EndlT();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::cout.rdbuf(before);

  // Each thread's lines are whole and in its order.
  std::istringstream lines(console.text);
  std::map<int, int> nextLine;
  for (std::string line; std::getline(lines, line);) {
    int thread = -1;
    std::string word;
    std::istringstream(line) >> word >> thread;
    std::ostringstream expected;
    expected << "thread " << thread << " line " << nextLine[thread]++ << " of its own";
    ASSERT_EQ(line, expected.str());
  }
  EXPECT_EQ(nextLine, (std::map<int, int>{{0, kLines}, {1, kLines}, {2, kLines}, {3, kLines}}));
}

TEST(CoutBufferDeathTest, DestructionEndsTheProgramWhenTheConsoleThrows) {
  const auto destroy = [] {
    FailingBuffer console;
    std::cout.rdbuf(&console);
    std::cout.exceptions(std::ios_base::badbit);
    exc::CoutBuffer() << "line" << exc::EndlT();
  };
  EXPECT_DEATH(destroy(), "terminate called");
}
