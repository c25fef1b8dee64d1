#include "exc/console/thread_safe_ostream.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/exc/console/counting_buffer.h"
#include "tests/support/cout_capture.h"

TEST(ThreadSafeOStream, WritesTheWholeStringAtOnce) {
  CountingBuffer buffer;
  std::ostream stream(&buffer);
  exc::ThreadSafeOStream out(stream);
  const std::string text("a line\nwith a null \0 in it", 26);
  out << text << std::string("more");
  EXPECT_EQ(buffer.writes, (std::vector<std::string>{text, "more"}));
  EXPECT_EQ(buffer.flushes, 0);
}

TEST(ThreadSafeOStream, FlushesTheStream) {
  CountingBuffer buffer;
  std::ostream stream(&buffer);
  exc::ThreadSafeOStream out(stream);
  out.flush();
  EXPECT_EQ(buffer.flushes, 1);
  EXPECT_EQ(buffer.writes.size(), 0u);
}

TEST(ThreadSafeOStream, ThreadSafeCoutIsStandardOutput) {
  test_support::CoutCapture capture;
  exc::thread_safe_cout << std::string("to the console\n");
  EXPECT_EQ(capture.Text(), "to the console\n");
}

TEST(ThreadSafeOStream, GivesTheLockUpWhenTheStreamThrows) {
  FailingBuffer buffer;
  std::ostream stream(&buffer);
  stream.exceptions(std::ios_base::badbit);
  exc::ThreadSafeOStream out(stream);
  EXPECT_THROW(out << std::string("text"), std::runtime_error);
  stream.clear();
  EXPECT_THROW(out << std::string("text"), std::runtime_error) << "and not a wait for ever";
}

// Two-byte pieces would be torn apart if a write did not hold the lock to its end.
TEST(ThreadSafeOStream, StringsOfDifferentThreadsNeverInterleave) {
  constexpr int kThreads = 4;
  constexpr int kStrings = 500;
  SlowBuffer buffer;
  std::ostream stream(&buffer);
  exc::ThreadSafeOStream out(stream);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&out, i] {
      const std::string text = std::string(40, static_cast<char>('a' + i)) + "\n";
      for (int n = 0; n < kStrings; ++n) {
        out << text;
        if (n % 16 == 0) out.flush();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();

  std::istringstream lines(buffer.text);
  std::vector<int> seen(kThreads, 0);
  for (std::string line; std::getline(lines, line);) {
    ASSERT_EQ(line.size(), 40u);
    ASSERT_EQ(std::set<char>(line.begin(), line.end()).size(), 1u) << line;
    ++seen.at(static_cast<std::size_t>(line[0] - 'a'));
  }
  EXPECT_EQ(seen, std::vector<int>(kThreads, kStrings));
}
