// What can be wrong in a song's file before it is held against the song.
#include "reference_suite/midi/show_folder/read_song_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using tesk_midi::FileProblems;
using tesk_midi::Problem;
using tesk_midi::ReadSongLog;
using tesk_midi::WrittenSongLog;
using testing::ElementsAre;

std::vector<std::string> Problems(const std::string& text) {
  std::vector<Problem> problems;
  FileProblems file("f", "3", &problems);
  ReadSongLog(text, &file);
  std::vector<std::string> texts;
  for (const Problem& problem : problems) {
    EXPECT_EQ(problem.songNumber, "3");
    EXPECT_FALSE(problem.isWarning);
    texts.push_back(tesk_midi::ToString(problem));
  }
  return texts;
}

WrittenSongLog Read(const std::string& text) {
  std::vector<Problem> problems;
  FileProblems file("f", "3", &problems);
  return ReadSongLog(text, &file);
}

struct Row {
  const char* text;
  const char* problem;
};
void PrintTo(const Row& row, std::ostream* out) {
  *out << row.text;
}

class SongLogErrors : public testing::TestWithParam<Row> {};

TEST_P(SongLogErrors, AreToldWithTheirPlace) {
  EXPECT_THAT(Problems(GetParam().text), ElementsAre(std::string("f:") + GetParam().problem));
}

INSTANTIATE_TEST_SUITE_P(
    Format, SongLogErrors,
    testing::Values(Row{"format = 2",
                        "1:10: format 2 is not known here; this version reads format 1 and nothing else "
                        "in the file was read."},
                    Row{"format = \"1\"",
                        "1:10: \"format\" must be a whole number, but is a text; write format = 1, "
                        "for instance."},
                    Row{"a = \n",
                        "1:5: is not TOML: Error while parsing key-value pair: expected value, saw '\\n'."}));

INSTANTIATE_TEST_SUITE_P(
    UnknownKeys, SongLogErrors,
    testing::Values(
        Row{"atacca = true", "1:1: unknown key \"atacca\"; did you mean \"attacca\"?"},
        Row{"\n  first = 1",
            "2:3: unknown key \"first\"; known here are \"format\", \"skip\", \"attacca\", \"first_bar\", "
            "\"audio_start\", \"audio_end\", \"tempo\", \"transpose\", \"vamp\", \"safety\", \"repeat\", "
            "\"cut\", \"caesura\", \"marker\", \"click\" and \"page\"."},
        Row{"[[vamps]]\n", "1:3: unknown table \"vamps\"; did you mean \"vamp\"?"},
        Row{"[temp]\n", "1:2: unknown table \"temp\"; did you mean \"tempo\"?"},
        Row{"cutt = []", "1:1: unknown key \"cutt\"; did you mean \"cut\"?"},
        Row{"cutt = [1]", "1:1: unknown key \"cutt\"; did you mean \"cut\"?"},
        Row{"[[caesura]]\nat = \"1\"\nta = 2",
            "3:1: unknown key \"ta\" in [[caesura]]; known here is only \"at\"."},
        Row{"[[safety]]\nfrom = \"1\"\nto = \"2\"\nform = 2",
            "4:1: unknown key \"form\" in [[safety]]; did you mean \"from\"?"},
        Row{"[[safety]]\nfrom = \"1\"\nto = \"2\"\nexit = \"bar\"",
            "4:1: unknown key \"exit\" in [[safety]]; known here are \"from\" and \"to\"."},
        Row{"[[repeat]]\nfrom = \"1\"\nto = \"2\"\nexit = \"bar\"",
            "4:1: unknown key \"exit\" in [[repeat]]; known here are \"from\", \"to\" and \"passes\"."},
        Row{"[[caesura]]\nat = \"1\"\nattacca = true",
            "3:1: unknown key \"attacca\" in [[caesura]]; it belongs above the first table of the file."},
        Row{"[[caesura]]\nat = { tick = 1, bar = 2 }",
            "2:18: unknown key \"bar\" in the position of \"at\"; known here is only \"tick\"."},
        Row{"\"a\\u001bb\" = 1",
            "1:1: unknown key \"a\\x1bb\"; known here are \"format\", \"skip\", \"attacca\", "
            "\"first_bar\", \"audio_start\", \"audio_end\", \"tempo\", \"transpose\", \"vamp\", "
            "\"safety\", \"repeat\", \"cut\", \"caesura\", \"marker\", \"click\" and \"page\"."}));

INSTANTIATE_TEST_SUITE_P(
    WrongKinds, SongLogErrors,
    testing::Values(
        Row{"skip = 1",
            "1:8: \"skip\" must be true or false, but is a whole number; write skip = true, for instance."},
        Row{"attacca = \"true\"",
            "1:11: \"attacca\" must be true or false, but is a text; write attacca = true, for instance."},
        Row{"first_bar = 1.0",
            "1:13: \"first_bar\" must be a whole number, but is a number with a point; write first_bar = 0, "
            "for instance."},
        Row{"first_bar = \"0\"",
            "1:13: \"first_bar\" must be a whole number, but is a text; write first_bar = 0, for instance."},
        Row{"audio_start = 5",
            "1:15: \"audio_start\" must be a position, but is a whole number; write audio_start = \"1\", for "
            "instance."},
        Row{"audio_end = 07:32:00",
            "1:13: \"audio_end\" must be a position, but is a date or a time; write audio_end = \"97\", for "
            "instance."},
        Row{"[[caesura]]\nat = 29.3",
            "2:6: \"at\" must be a position, but is a number with a point; write at = \"17\", for instance."},
        Row{"[[caesura]]\nat = [\"29.3\"]",
            "2:6: \"at\" must be a position, but is a list; write at = \"17\", for instance."},
        Row{"[[cut]]\nfrom = \"1\"\nto = true",
            "3:6: \"to\" must be a position, but is true or false; write to = \"25\", for instance."},
        Row{"[[tempo]]\nat = \"1\"\nscale = \"0,95\"",
            "3:9: \"scale\" must be a number, but is a text; write scale = 0.95, for instance."},
        Row{"[[transpose]]\nat = \"1\"\nsemitones = 2.0",
            "3:13: \"semitones\" must be a whole number, but is a number with a point; write semitones = -2, "
            "for instance."},
        Row{"[[repeat]]\nfrom = \"1\"\nto = \"2\"\npasses = \"3\"",
            "4:10: \"passes\" must be a whole number, but is a text; write passes = 3, for instance."},
        Row{"[[marker]]\nat = \"1\"\nname = 3",
            "3:8: \"name\" must be a text, but is a whole number; write name = \"Dialogue\", for instance."},
        Row{"[[page]]\nat = \"1\"\nnumber = \"3\"",
            "3:10: \"number\" must be a whole number, but is a text; write number = 1, for instance."},
        Row{"[[vamp]]\nfrom = \"1\"\nto = \"2\"\nexit = 3",
            "4:8: \"exit\" must be a text, but is a whole number; write exit = \"end\", for instance."},
        Row{"[[caesura]]\nat = { tick = \"5\" }",
            "2:15: \"tick\" must be a whole number, but is a text; write tick = 30720, for instance."},
        Row{"[vamp]\nfrom = \"1\"\nto = \"2\"",
            "1:1: \"vamp\" must be a list of tables, but is a table; write [[vamp]], with two brackets, "
            "above the keys of each."},
        Row{"caesura = \"29\"",
            "1:11: \"caesura\" must be a list of tables, but is a text; write [[caesura]], with two "
            "brackets, above the keys of each."},
        Row{"caesura = [\"29\"]",
            "1:12: \"caesura\" must be a list of tables, but holds a text; write [[caesura]], with two "
            "brackets, above the keys of each."}));

INSTANTIATE_TEST_SUITE_P(
    Ranges, SongLogErrors,
    testing::Values(
        Row{"first_bar = -1", "1:13: \"first_bar\" must lie between 0 and 1000000, but is -1."},
        Row{"first_bar = 1000001", "1:13: \"first_bar\" must lie between 0 and 1000000, but is 1000001."},
        Row{"[[tempo]]\nat = \"1\"\nscale = 0.2499",
            "3:9: \"scale\" must lie between 0.25 and 4, but is 0.2499."},
        Row{"[[tempo]]\nat = \"1\"\nscale = 4.1", "3:9: \"scale\" must lie between 0.25 and 4, but is 4.1."},
        Row{"[[tempo]]\nat = \"1\"\nscale = 5", "3:9: \"scale\" must lie between 0.25 and 4, but is 5."},
        Row{"[[tempo]]\nat = \"1\"\nscale = nan", "3:9: \"scale\" must lie between 0.25 and 4, but is nan."},
        Row{"[[tempo]]\nat = \"1\"\nscale = -inf",
            "3:9: \"scale\" must lie between 0.25 and 4, but is -inf."},
        Row{"[[transpose]]\nat = \"1\"\nsemitones = 25",
            "3:13: \"semitones\" must lie between -24 and 24, but is 25."},
        Row{"[[transpose]]\nat = \"1\"\nsemitones = -25",
            "3:13: \"semitones\" must lie between -24 and 24, but is -25."},
        Row{"[[repeat]]\nfrom = \"1\"\nto = \"2\"\npasses = 1",
            "4:10: \"passes\" must lie between 2 and 1000000, but is 1."},
        Row{"[[repeat]]\nfrom = \"1\"\nto = \"2\"\npasses = 9223372036854775807",
            "4:10: \"passes\" must lie between 2 and 1000000, but is 9223372036854775807."},
        Row{"[[page]]\nat = \"1\"\nnumber = -1",
            "3:10: \"number\" must lie between 0 and 1000000, but is -1."},
        Row{"[[caesura]]\nat = { tick = -1 }",
            "2:15: \"tick\" must lie between 0 and 4294967295, but is -1."},
        Row{"[[caesura]]\nat = { tick = 4294967296 }",
            "2:15: \"tick\" must lie between 0 and 4294967295, but is 4294967296."},
        Row{"[[vamp]]\nfrom = \"1\"\nto = \"2\"\nexit = \"now\"",
            "4:8: \"exit\" must be \"end\", \"bar\" or \"beat\", but is \"now\"."}));

INSTANTIATE_TEST_SUITE_P(
    MissingKeys, SongLogErrors,
    testing::Values(
        Row{"[[tempo]]\nscale = 0.5",
            "1:1: \"at\" is missing in [[tempo]]; write at = \"17\", for instance."},
        Row{"[[tempo]]\nat = \"1\"",
            "1:1: \"scale\" is missing in [[tempo]]; write scale = 0.95, for instance."},
        Row{"[[transpose]]\nat = \"1\"",
            "1:1: \"semitones\" is missing in [[transpose]]; write semitones = -2, for instance."},
        Row{"[[vamp]]\nto = \"1\"",
            "1:1: \"from\" is missing in [[vamp]]; write from = \"17\", for instance."},
        Row{"\n [[vamp]]\nfrom = \"1\"",
            "2:2: \"to\" is missing in [[vamp]]; write to = \"25\", for instance."},
        Row{"[[safety]]\nfrom = \"1\"",
            "1:1: \"to\" is missing in [[safety]]; write to = \"25\", for instance."},
        Row{"[[repeat]]\nfrom = \"1\"",
            "1:1: \"to\" is missing in [[repeat]]; write to = \"25\", for instance."},
        Row{"[[cut]]\nfrom = \"1\"", "1:1: \"to\" is missing in [[cut]]; write to = \"25\", for instance."},
        Row{"[[click]]\nfrom = \"1\"",
            "1:1: \"to\" is missing in [[click]]; write to = \"25\", for instance."},
        Row{"[[caesura]]", "1:1: \"at\" is missing in [[caesura]]; write at = \"17\", for instance."},
        Row{"[[marker]]\nat = \"1\"",
            "1:1: \"name\" is missing in [[marker]]; write name = \"Dialogue\", for instance."},
        Row{"[[page]]\nat = \"1\"",
            "1:1: \"number\" is missing in [[page]]; write number = 1, for instance."},
        Row{"[[caesura]]\nat = {}",
            "2:6: \"tick\" is missing in the position of \"at\"; write tick = 30720, for instance."}));

const char kForms[] =
    ", which is no position; write a bar (\"17\"), bar and beat (\"17.3\"), bar, beat and ticks "
    "(\"17.3.120\"), \"end\" or { tick = 30720 }.";

TEST(SongLogErrors, TextsThatAreNoPositions) {
  EXPECT_THAT(Problems("audio_start = \"one\"\naudio_end = \"17,3\"\n[[caesura]]\nat = \"tick:30720\"\n"),
              ElementsAre(std::string("f:1:15: \"audio_start\" is \"one\"") + kForms,
                          std::string("f:2:13: \"audio_end\" is \"17,3\"") + kForms,
                          std::string("f:4:6: \"at\" is \"tick:30720\"") + kForms));
}

TEST(SongLogErrors, AllOfThemAreTold) {
  EXPECT_THAT(
      Problems(
          "skip = 1\natacca = true\n[[vamp]]\nform = \"9\"\nto = 13\n[[tempo]]\nat = \"1\"\nscale = 9\n"),
      ElementsAre(
          "f:2:1: unknown key \"atacca\"; did you mean \"attacca\"?",
          "f:1:8: \"skip\" must be true or false, but is a whole number; write skip = true, for "
          "instance.",
          "f:8:9: \"scale\" must lie between 0.25 and 4, but is 9.",
          "f:4:1: unknown key \"form\" in [[vamp]]; did you mean \"from\"?",
          "f:3:1: \"from\" is missing in [[vamp]]; write from = \"17\", for instance.",
          "f:5:6: \"to\" must be a position, but is a whole number; write to = \"25\", for instance."));
}

TEST(SongLogErrors, FileThatNobodyWroteByHand) {
  EXPECT_THAT(Problems(std::string(1024 * 1024 + 1, '\n')),
              ElementsAre("f: is larger than 1048576 bytes; see that it is the right file."));
  EXPECT_THAT(Problems(std::string(1024 * 1024, '\n')), testing::IsEmpty());
}

TEST(SongLog, EveryKeyIsOptional) {
  const WrittenSongLog log = Read("");
  EXPECT_FALSE(log.skip);
  EXPECT_FALSE(log.attacca);
  EXPECT_EQ(log.firstBar, 1);
  EXPECT_FALSE(log.audioStart);
  EXPECT_FALSE(log.audioEnd);
  EXPECT_TRUE(log.cues.empty());
}

TEST(SongLog, CuesWithSomethingWrongAreNotInIt) {
  EXPECT_TRUE(Read("[[tempo]]\nat = \"1\"\nscale = 9\n[[caesura]]\nat = 5\n[[cut]]\nfrom = 1\nto = 2\n")
                  .cues.empty());
}

TEST(SongLog, CuesComeInTheOrderOfTheFile) {
  const WrittenSongLog log = Read("[[vamp]]\nfrom = \"1\"\nto = \"2\"\n[[tempo]]\nat = \"1\"\nscale = 1\n");
  ASSERT_EQ(log.cues.size(), 2u);
  EXPECT_STREQ(tesk_midi::CueWord(log.cues[0].kind), "vamp");
  EXPECT_EQ(log.cues[0].place.line, 1);
  EXPECT_STREQ(tesk_midi::CueWord(log.cues[1].kind), "tempo");
  EXPECT_EQ(log.cues[1].scale, 1.0);
}

TEST(SongLog, ListsOfInlineTablesAreTheSame) {
  const WrittenSongLog log = Read("caesura = [{ at = \"1\" }, { at = \"2\" }]\n");
  ASSERT_EQ(log.cues.size(), 2u);
  EXPECT_EQ(log.cues[1].place.column, 26);
}

}  // namespace
