#include "reference_suite/midi/show_folder/song_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using tesk_midi::FindSongFiles;
using tesk_midi::NumberByValue;
using tesk_midi::Problem;
using tesk_midi::SongFiles;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

struct Found {
  std::vector<std::string> songs;  // "number|name|midi|toml"
  std::vector<std::string> problems;
};

Found Find(const std::vector<std::string>& entries) {
  Found found;
  std::vector<Problem> problems;
  for (const SongFiles& song : FindSongFiles(entries, &problems)) {
    found.songs.push_back(song.number + "|" + song.name + "|" + song.midi + "|" + song.toml);
  }
  for (const Problem& problem : problems) {
    found.problems.push_back((problem.isWarning ? "warning: " : "") + tesk_midi::ToString(problem));
  }
  return found;
}

TEST(SongFiles, NumberIsBeforeTheFirstBlankAndNameTheRest) {
  const Found found = Find({"12 My Song.mid", "12 Its Cues.toml", "2a  Two.mid", "3 .mid", "4 v1.2.mid"});
  EXPECT_THAT(found.songs, UnorderedElementsAre("12|My Song|12 My Song.mid|12 Its Cues.toml",
                                                "2a| Two|2a  Two.mid|", "3||3 .mid|", "4|v1.2|4 v1.2.mid|"));
  EXPECT_THAT(found.problems, IsEmpty());
}

TEST(SongFiles, AnyNumberWillDo) {
  const Found found =
      Find({"0 A.mid", "1000000000 B.mid", "99999999999999999999999 C.mid", "x D.mid", "-1 E.mid"});
  EXPECT_EQ(found.songs.size(), 5u);
  EXPECT_THAT(found.problems, IsEmpty());
}

TEST(SongFiles, OtherFilesAreNoneOfOurs) {
  const Found found = Find({"README", "notes.txt", "3 Waltz.mid~", "3 Waltz.mid.bak"});
  EXPECT_THAT(found.songs, IsEmpty());
  EXPECT_THAT(found.problems, IsEmpty());
}

TEST(SongFiles, ExtensionThatIsWrittenDifferentlyIsWarnedOf) {
  const char kText[] =
      ": is not read; the name of a song's MIDI file ends in \".mid\" and that of its cues in \".toml\".";
  const Found found = Find({"3 Waltz.MID", "4 Polka.midi", "5 Tango.Toml"});
  EXPECT_THAT(found.songs, IsEmpty());
  EXPECT_THAT(found.problems, ElementsAre(std::string("warning: songs/3 Waltz.MID") + kText,
                                          std::string("warning: songs/4 Polka.midi") + kText,
                                          std::string("warning: songs/5 Tango.Toml") + kText));
}

TEST(SongFiles, NameWithoutANumberIsAnError) {
  EXPECT_THAT(
      Find({"Waltz.mid", " Waltz.mid", "Cues.toml"}).problems,
      ElementsAre("songs/Waltz.mid: the name must begin with the song's number and a blank; call it, for "
                  "instance, \"12 Waltz.mid\".",
                  "songs/ Waltz.mid: the name must begin with the song's number and a blank; call it, for "
                  "instance, \"12 Waltz.mid\".",
                  "songs/Cues.toml: the name must begin with the song's number and a blank; call it, for "
                  "instance, \"12 Waltz.toml\"."));
}

TEST(SongFiles, TwoMidiFilesWithOneNumberAreAnErrorThatNamesBoth) {
  const Found found = Find({"3 Polka.mid", "3 Waltz.mid"});
  EXPECT_THAT(found.songs, ElementsAre("3|Polka|3 Polka.mid|"));
  EXPECT_THAT(found.problems,
              ElementsAre("songs/3 Waltz.mid: the number \"3\" is that of \"songs/3 Polka.mid\" too; "
                          "give each song a number of its own."));
}

TEST(SongFiles, NumbersThatDifferInLeadingZerosAreOneNumber) {
  EXPECT_THAT(
      Find({"001 A.mid", "01 B.mid", "1 C.mid"}).problems,
      ElementsAre(
          "songs/01 B.mid: the number \"01\" is that of \"songs/001 A.mid\" too; give each song a "
          "number of its own.",
          "songs/1 C.mid: the number \"1\" is that of \"songs/001 A.mid\" too; give each song a number "
          "of its own."));
}

TEST(SongFiles, TwoTomlFilesWithOneNumberAreAnErrorThatNamesBoth) {
  EXPECT_THAT(
      Find({"3 A.mid", "3 A.toml", "3 B.toml"}).problems,
      ElementsAre("songs/3 B.toml: the number \"3\" is that of \"songs/3 A.toml\" too; a song has one change "
                  "log."));
}

TEST(SongFiles, TomlWithoutMidiIsAnErrorThatNamesIt) {
  EXPECT_THAT(
      Find({"5 Tango.toml"}).problems,
      ElementsAre("songs/5 Tango.toml: song \"5\" has no MIDI file; add \"songs/5 Tango.mid\" or remove this "
                  "file."));
}

TEST(SongFiles, NumberOfTheTomlWrittenDifferently) {
  const Found found = Find({"05 Tango.mid", "5 Tango.toml"});
  EXPECT_THAT(found.songs, ElementsAre("05|Tango|05 Tango.mid|"));
  EXPECT_THAT(found.problems,
              ElementsAre("songs/5 Tango.toml: the number is written \"5\" here and \"05\" in "
                          "\"songs/05 Tango.mid\"; write both alike."));
}

TEST(SongFiles, NamesAreShownEscaped) {
  EXPECT_THAT(
      Find({"3 A.mid", "3 \x1b[2J\xff.mid"}).problems,
      ElementsAre(
          "songs/3 \\x1b[2J\\xff.mid: the number \"3\" is that of \"songs/3 A.mid\" too; give each song "
          "a number of its own."));
}

TEST(NumberByValue, DropsLeadingZerosOfEveryRun) {
  EXPECT_EQ(NumberByValue("001"), "1");
  EXPECT_EQ(NumberByValue("1"), "1");
  EXPECT_EQ(NumberByValue("10"), "10");
  EXPECT_EQ(NumberByValue("100"), "100");
  EXPECT_EQ(NumberByValue("0"), "0");
  EXPECT_EQ(NumberByValue("000"), "0");
  EXPECT_EQ(NumberByValue("02a"), "2a");
  EXPECT_EQ(NumberByValue("2a01"), "2a1");
  EXPECT_EQ(NumberByValue("2a00b"), "2a0b");
  EXPECT_EQ(NumberByValue("1001"), "1001");
  EXPECT_EQ(NumberByValue("2-01"), "2-1");
  EXPECT_EQ(NumberByValue(""), "");
}

}  // namespace
