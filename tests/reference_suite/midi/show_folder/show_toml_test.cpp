#include "reference_suite/midi/show_folder/show_toml.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using tesk_midi::FileProblems;
using tesk_midi::MakeRunningOrder;
using tesk_midi::Problem;
using tesk_midi::ReadShowToml;
using tesk_midi::ShowToml;
using testing::ElementsAre;
using testing::IsEmpty;

class ShowTomlTest : public testing::Test {
 protected:
  ShowToml Read(const std::string& text) { return ReadShowToml(text, &file_); }
  std::vector<std::string> OrderOf(const std::vector<std::string>& songs, const std::string& text) {
    return MakeRunningOrder(songs, Read(text).order, &file_);
  }
  std::vector<std::string> Problems() const {
    std::vector<std::string> texts;
    for (const Problem& problem : problems_) texts.push_back(tesk_midi::ToString(problem));
    return texts;
  }

  std::vector<Problem> problems_;
  FileProblems file_{"show.toml", "", &problems_};
};

TEST_F(ShowTomlTest, TitleAndOrder) {
  const std::string text =
      "format = 1\ntitle = \"An Evening Upstairs\"\norder = [\"1\", \"2\", \"2a\", \"10\"]\n";
  EXPECT_EQ(Read(text).title, "An Evening Upstairs");
  EXPECT_THAT(OrderOf({"1", "2", "2a", "10"}, text), ElementsAre("1", "2", "2a", "10"));
  EXPECT_THAT(Problems(), IsEmpty());
}

TEST_F(ShowTomlTest, EverythingIsOptional) {
  EXPECT_EQ(Read("").title, "");
  EXPECT_THAT(OrderOf({"1", "2"}, ""), ElementsAre("1", "2"));
  EXPECT_THAT(Problems(), IsEmpty());
}

TEST_F(ShowTomlTest, SongsLeftOutFollowAfterTheOrder) {
  EXPECT_THAT(OrderOf({"1", "2", "2a", "10"}, "order = [\"10\", \"2\"]"), ElementsAre("10", "2", "1", "2a"));
  EXPECT_THAT(OrderOf({"1", "2"}, "order = []"), ElementsAre("1", "2"));
  EXPECT_THAT(Problems(), IsEmpty());
}

TEST_F(ShowTomlTest, UnknownNumberIsAnError) {
  EXPECT_THAT(OrderOf({"1", "2", "200"}, "order = [\"2\", \"77\"]"), ElementsAre("2", "1", "200"));
  EXPECT_THAT(Problems(),
              ElementsAre("show.toml:1:15: there is no song \"77\" in songs/; take it out of \"order\"."));
}

TEST_F(ShowTomlTest, UnknownNumberThatIsNearlyOne) {
  OrderOf({"1", "2", "200"}, "order = [\n  \"02\",\n  \"210\"]");
  EXPECT_THAT(Problems(),
              ElementsAre("show.toml:2:3: there is no song \"02\" in songs/; did you mean \"2\"?",
                          "show.toml:3:3: there is no song \"210\" in songs/; did you mean \"200\"?"));
}

TEST_F(ShowTomlTest, NumberTwiceIsAnError) {
  EXPECT_THAT(OrderOf({"1", "2"}, "order = [\"2\",\n\"1\", \"2\"]"), ElementsAre("2", "1"));
  EXPECT_THAT(Problems(),
              ElementsAre("show.toml:2:6: song \"2\" is in \"order\" already, in line 1; keep it once."));
}

TEST_F(ShowTomlTest, OrderMustBeAListOfTexts) {
  Read("order = \"1\"");
  Read("order = [1, \"2\"]");
  EXPECT_THAT(
      Problems(),
      ElementsAre("show.toml:1:9: \"order\" must be a list of song numbers in quotes, but is a text; write "
                  "order = [\"1\", \"2\"], for instance.",
                  "show.toml:1:10: \"order\" must be a list of song numbers in quotes, but holds a whole "
                  "number; write order = [\"1\", \"2\"], for instance."));
}

TEST_F(ShowTomlTest, TitleMustBeAText) {
  EXPECT_EQ(Read("title = 5").title, "");
  EXPECT_THAT(Problems(),
              ElementsAre("show.toml:1:9: \"title\" must be a text, but is a whole number; write title = "
                          "\"An Evening Upstairs\", for instance."));
}

TEST_F(ShowTomlTest, TitleIsShownEscaped) {
  EXPECT_EQ(Read("title = \"a\\u001bb\"").title, "a\\x1bb");
}

TEST_F(ShowTomlTest, UnknownKeys) {
  Read("titel = \"x\"\n[songs]\n");
  EXPECT_THAT(
      Problems(),
      ElementsAre(
          "show.toml:1:1: unknown key \"titel\"; did you mean \"title\"?",
          "show.toml:2:2: unknown table \"songs\"; known here are \"format\", \"title\" and \"order\"."));
}

TEST_F(ShowTomlTest, WrongFormatIsTheOnlyThingToSay) {
  EXPECT_EQ(Read("format = 2\ntitle = 5\nnew = true\n").title, "");
  EXPECT_THAT(Problems(),
              ElementsAre("show.toml:1:10: format 2 is not known here; this version reads format 1 and "
                          "nothing else in the file was read."));
}

TEST_F(ShowTomlTest, BrokenSyntax) {
  EXPECT_TRUE(Read("title = \n").order.empty());
  EXPECT_THAT(Problems(),
              ElementsAre("show.toml:1:9: is not TOML: Error while parsing key-value pair: expected value, "
                          "saw '\\n'."));
}

}  // namespace
