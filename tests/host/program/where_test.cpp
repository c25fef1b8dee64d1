#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/host/run_orbel.h"
#include "tests/host/show_files.h"

namespace host_tests {
namespace {

class Where : public testing::Test {
 protected:
  Where() { files_.AddSong("1", "Waltz", 8); }
  ShowFiles files_;
};

TEST_F(Where, SaysEachPositionInEveryUnit) {
  const Ended run = Orbel({"where", files_.Show(), "1", "1", "2.3", "2.3.120", "end"});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_EQ(run.out,
            "1.1.0    tick      0  sample      0  0:00.000\n"
            "2.3.0    tick   2880  sample  12000  0:01.500\n"
            "2.3.120  tick   3000  sample  12500  0:01.563\n"
            "9.1.0    tick  15360  sample  64000  0:08.000\n");
}

TEST_F(Where, GoesTheOtherWayRoundFromTicksSamplesAndTimes) {
  const Ended run =
      Orbel({"where", files_.Show(), "1", "tick:2880", "sample:12001", "time:0:01.5", "time:1.5"});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_EQ(run.out,
            "2.3.0  tick  2880  sample  12000  0:01.500\n"
            "2.3.0  tick  2880  sample  12001  0:01.500\n"
            "2.3.0  tick  2880  sample  12000  0:01.500\n"
            "2.3.0  tick  2880  sample  12000  0:01.500\n");
}

TEST_F(Where, JsonIsAnArrayWithOneObjectAPosition) {
  const Ended run = Orbel({"where", "--json", files_.Show(), "1", "2.3", "end"});
  EXPECT_EQ(run.status, 0) << run.messages;
  const auto json = nlohmann::json::parse(run.out);
  const nlohmann::json expected = {
      {{"position", "2.3.0"}, {"tick", 2880}, {"sample", 12000}, {"seconds", 1.5}},
      {{"position", "9.1.0"}, {"tick", 15360}, {"sample", 64000}, {"seconds", 8.0}}};
  EXPECT_EQ(json, expected);
}

TEST_F(Where, SamplesCountFromTheAudioStart) {
  files_.Write("songs/1 Waltz.toml", "format = 1\naudio_start = \"2\"\n");
  const Ended run = Orbel({"where", files_.Show(), "1", "1.2", "2", "2.3", "sample:0"});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_EQ(run.out,
            "1.2.0  tick   480  sample     0  0:00.000\n"
            "2.1.0  tick  1920  sample     0  0:00.000\n"
            "2.3.0  tick  2880  sample  4000  0:00.500\n"
            "2.1.0  tick  1920  sample     0  0:00.000\n");
}

TEST_F(Where, WhatDoesNotExistIsSaidInWords) {
  const auto complaint = [&](const std::string& position) {
    const Ended run = Orbel({"where", files_.Show(), "1", position});
    EXPECT_EQ(run.status, 1) << position;
    EXPECT_EQ(run.out, "") << position;
    return run.messages;
  };
  EXPECT_EQ(
      complaint("sample:64001"),
      "orbel: \"sample:64001\": lies after the end of the song, which is 9.1.0, sample 64000, 0:08.000\n");
  EXPECT_EQ(complaint("sample:-1"),
            "orbel: \"sample:-1\": after \"sample:\" comes a number of frames, for instance sample:44100\n");
  EXPECT_EQ(complaint("time:1:60"),
            "orbel: \"time:1:60\": after \"time:\" come minutes and seconds, for instance time:1:07.250\n");
  EXPECT_EQ(complaint("time:99999999999999999"),
            "orbel: \"time:99999999999999999\": lies after the end of the song\n");
  EXPECT_EQ(complaint("40"), "orbel: \"40\": bar 40 does not exist: the song has bars 1 to 8\n");
  EXPECT_THAT(complaint("nonsense"), testing::StartsWith("orbel: \"nonsense\": not a position; write a bar"));
}

TEST_F(Where, AnUnknownSongIsAnsweredWithTheKnownOnes) {
  files_.AddSong("2a", "Polka", 2);
  const Ended run = Orbel({"where", files_.Show(), "7", "1"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages, "orbel: " + files_.Show() + ": there is no song \"7\"; the songs are 1, 2a\n");
}

TEST(WhereWithoutAShow, SaysWhatAShowIs) {
  const Ended run = Orbel({"where", "no/such/show", "1", "1"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages,
            "orbel: no/such/show: is not a show folder; give the folder that holds songs/ and data/\n");
}

}  // namespace
}  // namespace host_tests
