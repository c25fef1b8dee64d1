#include "host/session/script.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <sstream>

#include "host/session/failure.h"

namespace orbel::host {
namespace {

std::vector<ScriptLine> Read(const std::string& text) {
  std::istringstream in(text);
  return ReadScript(in, "cues.txt");
}

std::string Complaint(const std::string& text) {
  try {
    Read(text);
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.GetStatus(), kFailed);
    return failure.what();
  }
  return "no complaint";
}

constexpr char kCommands[] =
    "expected a command: go, again, next, previous, pause, play, stop, left, right, seek POSITION, tempo "
    "SCALE, transpose SEMITONES, faster, slower, higher, lower or as-written";

TEST(Script, OfALongWordTheStartIsRepeated) {
  const std::string start(60, 'x');
  EXPECT_EQ(Complaint("waiting " + std::string(100'000, 'x') + "\n"),
            "cues.txt:1: found \"" + start + "...\", " + kCommands);
}

TEST(Script, ReadsEveryKindOfMoment) {
  const auto lines = Read(
      "# when      command\n"
      "at 9.1 go   # first\n"
      "\n"
      "at 9.1 pass 3   go\n"
      "waiting go\n"
      "\ttime 12.500\tstop\n");
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0].moment, MomentKind::At);
  EXPECT_EQ(lines[0].position, "9.1");
  EXPECT_EQ(lines[0].pass, 1);
  EXPECT_EQ(lines[0].line, 2);
  EXPECT_EQ(lines[1].pass, 3);
  EXPECT_EQ(lines[1].line, 4);
  EXPECT_EQ(lines[2].moment, MomentKind::Waiting);
  EXPECT_EQ(lines[3].moment, MomentKind::Time);
  EXPECT_EQ(lines[3].seconds, 12.5);
  EXPECT_EQ(lines[3].command.kind, CommandKind::Stop);
}

TEST(Script, ReadsEveryCommandAndSaysItBack) {
  for (const std::string command : {"go", "again", "next", "previous", "pause", "play", "stop", "left",
                                    "right", "seek 17.3.120", "tempo 0.95", "transpose -2"}) {
    const auto lines = Read("waiting " + command);
    ASSERT_EQ(lines.size(), 1U) << command;
    EXPECT_EQ(ToString(lines[0].command), command);
  }
}

TEST(Script, AnEmptyScriptHasNoLines) {
  EXPECT_TRUE(Read("").empty());
  EXPECT_TRUE(Read("\n  # nothing\n").empty());
}

TEST(Script, ComplaintsNameFileLineWhatWasFoundAndWhatWasExpected) {
  const std::string moments =
      "expected when: \"at POSITION\", \"at POSITION pass N\", \"waiting\" or \"time SECONDS\"";
  EXPECT_EQ(Complaint("\nwhen 9 go"), "cues.txt:2: found \"when\", " + moments);
  EXPECT_EQ(Complaint("at"), "cues.txt:1: the line ends, expected a position, for instance 9.1");
  EXPECT_EQ(Complaint("at 9"), std::string("cues.txt:1: the line ends, ") + kCommands);
  EXPECT_EQ(Complaint("at 9 jump"), std::string("cues.txt:1: found \"jump\", ") + kCommands);
  EXPECT_EQ(Complaint("at 9 pass 0 go"), "cues.txt:1: found \"0\", expected a number of passes from 1 on");
  EXPECT_EQ(Complaint("at 9 pass x go"), "cues.txt:1: found \"x\", expected a number of passes from 1 on");
  EXPECT_EQ(Complaint("time -1 go"),
            "cues.txt:1: found \"-1\", expected seconds of output, for instance 12.500");
  EXPECT_EQ(Complaint("time nan go"),
            "cues.txt:1: found \"nan\", expected seconds of output, for instance 12.500");
  EXPECT_EQ(Complaint("waiting tempo 5"), "cues.txt:1: found \"5\", expected a tempo scale from 0.25 to 4");
  EXPECT_EQ(Complaint("waiting tempo"), "cues.txt:1: the line ends, expected a tempo scale from 0.25 to 4");
  EXPECT_EQ(Complaint("waiting transpose 1.5"),
            "cues.txt:1: found \"1.5\", expected semitones from -24 to 24");
  EXPECT_EQ(Complaint("waiting transpose 25"), "cues.txt:1: found \"25\", expected semitones from -24 to 24");
  EXPECT_EQ(Complaint("waiting seek"), "cues.txt:1: the line ends, expected a position, for instance 9.1");
  EXPECT_EQ(Complaint("waiting go now"), "cues.txt:1: found \"now\", expected nothing more on this line");
}

TEST(Script, ComplaintsCannotForgeLines) {
  EXPECT_THAT(Complaint("\x1b[2J go"), testing::StartsWith("cues.txt:1: found \"\\x1b[2J\", expected"));
}

TEST(Script, AFileThatIsNotThereIsNamed) {
  try {
    ReadScriptFile("no/such/script");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_STREQ(failure.what(), "no/such/script: cannot be read; give the path of a script");
  }
}

// A folder would read as an empty script; a pipe is not waited for, nor a device read without end.
TEST(Script, WhatIsNoFileIsNoScript) {
  const std::string pipe = testing::TempDir() + "orbel_script_pipe_" + std::to_string(::getpid());
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path : {std::string("/"), pipe, std::string("/dev/zero")}) {
    try {
      ReadScriptFile(path);
      ADD_FAILURE() << path;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.what(), path + ": is a folder, a pipe or a device; give the path of a script");
    }
  }
  ::unlink(pipe.c_str());
  EXPECT_TRUE(ReadScriptFile("/dev/null").empty()) << "which is how an empty file is written in a hurry";
}

}  // namespace
}  // namespace orbel::host
