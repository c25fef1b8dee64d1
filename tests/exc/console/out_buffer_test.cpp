#include "exc/console/out_buffer.h"

#include <gtest/gtest.h>

#include <ios>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// What a target is asked for, in order.
struct SpyTarget {
  SpyTarget& operator<<(std::string text) {
    if (fail) throw std::runtime_error("target is gone");
    calls.push_back(text);
    return *this;
  }
  void flush() { calls.push_back("(flush)"); }

  std::vector<std::string> calls;
  bool fail = false;
};

using Buffer = exc::OutBuffer<SpyTarget>;
using Calls = std::vector<std::string>;

// Writes 12,5 and 1.000.
class GermanNumbers : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

}  // namespace

TEST(OutBuffer, WritesItsTextInOnePieceAndFlushesWhenDestroyed) {
  SpyTarget target;
  {
    Buffer buffer(target);
    buffer << "song " << std::string("12") << ": " << 7u << "\n";
    EXPECT_EQ(target.calls, Calls{});
  }
  EXPECT_EQ(target.calls, (Calls{"song 12: 7\n", "(flush)"}));
}

TEST(OutBuffer, NumbersAreWrittenAlikeInEveryLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale(), new GermanNumbers));
  SpyTarget target;
  Buffer(target) << 1'234'567LL << " " << 12.5;
  std::ostringstream german;
  german << 1'234'567LL << " " << 12.5;
  std::locale::global(before);
  EXPECT_EQ(german.str(), "1.234.567 12,5") << "so that something is tested";
  EXPECT_EQ(target.calls.front(), "1234567 12.5");
}

TEST(OutBuffer, CommitWritesTheTextAndKeepsIt) {
  SpyTarget target;
  Buffer buffer(target);
  buffer << "a";
  buffer.commit();
  EXPECT_EQ(target.calls, Calls{"a"});
  buffer << "b";
  buffer.commit();
  EXPECT_EQ(target.calls, (Calls{"a", "ab"}));
}

// Deliberate: commit() leaves the text in the buffer.
TEST(OutBuffer, FlushedByHandAndThenDestroyedWritesItsTextTwice) {
  SpyTarget target;
  {
    Buffer buffer(target);
    buffer << "line\n";
    buffer.flush();
  }
  EXPECT_EQ(target.calls, (Calls{"line\n", "(flush)", "line\n", "(flush)"}));
}

TEST(OutBuffer, CommitClearsTheErrorState) {
  SpyTarget target;
  Buffer buffer(target);
  buffer << "before ";
  buffer.setstate(std::ios_base::failbit);
  buffer << "lost ";
  buffer.commit();
  EXPECT_TRUE(buffer.good());
  buffer << "after";
  EXPECT_EQ(buffer.str(), "before after");
}

TEST(OutBuffer, TakesEveryNumberAsAStandardStreamWritesIt) {
  SpyTarget target;
  Buffer buffer(target);
  buffer << std::numeric_limits<long long>::min() << " " << std::numeric_limits<unsigned long>::max() << " "
         << static_cast<unsigned short>(65535) << " " << 4294967295u << " " << -1 << " " << 2L << " " << 3ULL
         << " " << static_cast<short>(-4) << " " << 0.5 << " " << 0.25f << " " << 1.5L << " " << true << " "
         << 'c';
  EXPECT_EQ(buffer.str(),
            "-9223372036854775808 18446744073709551615 65535 4294967295 -1 2 3 -4 0.5 0.25 1.5 1 c");
}

TEST(OutBuffer, TakesManipulators) {
  SpyTarget target;
  Buffer buffer(target);
  buffer << std::hex << 255u << " " << std::dec << 255u << " " << std::boolalpha << false;
  EXPECT_EQ(buffer.str(), "ff 255 false");
}

TEST(OutBuffer, EveryOperatorReturnsTheBuffer) {
  SpyTarget target;
  Buffer buffer(target);
  EXPECT_EQ(&(buffer << "text"), &buffer);
  EXPECT_EQ(&(buffer << std::string("text")), &buffer);
  EXPECT_EQ(&(buffer << 1LL), &buffer);
  EXPECT_EQ(&(buffer << 1u), &buffer);
  EXPECT_EQ(&(buffer << static_cast<unsigned short>(1)), &buffer);
  EXPECT_EQ(&(buffer << 1ul), &buffer);
  EXPECT_EQ(&(buffer << std::dec), &buffer);
  EXPECT_EQ(&(buffer << 1.0), &buffer);
}

TEST(OutBufferDeathTest, DestructionEndsTheProgramWhenTheTargetThrows) {
  const auto destroy = [] {
    SpyTarget target;
    target.fail = true;
    Buffer buffer(target);
  };
  EXPECT_DEATH(destroy(), "terminate called");
}
