#include "player_core/player_wrapper/show_data_files.h"

#include <gtest/gtest.h>

#include <vector>

#include "suite/utility/listdir.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/throws_with_text.h"

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

class ShowDataFilesTest : public testing::Test {
 protected:
  ShowDataFilesTest() { show_.MakeFolder("data"); }

  void Put(const std::vector<std::string>& names) {
    for (const std::string& name : names) show_.WriteFile("data/" + name);
  }
  Pairs Names() { return InOrder(ListShowDataFiles(show_.Path()).songNames); }
  Pairs Files() { return InOrder(ListShowDataFiles(show_.Path()).fileNames); }
  static Pairs InOrder(const ShowDataFiles::ByNumber& map) { return {map.begin(), map.end()}; }

  test_support::TemporaryFolder show_;
};

TEST_F(ShowDataFilesTest, NumbersAreOrderedByValueAndNamesComeFromTheFileNames) {
  Put({"2 Intro.obd", "10 Finale.obd", "1 Opening Night.obd"});
  EXPECT_EQ(Names(), (Pairs{{"1", "Opening Night"}, {"2", "Intro"}, {"10", "Finale"}}));
  EXPECT_EQ(Files(), (Pairs{{"1", "1 Opening Night.obd"}, {"2", "2 Intro.obd"}, {"10", "10 Finale.obd"}}));
}

TEST_F(ShowDataFilesTest, TheExtensionMustBeObdExactly) {
  Put({"3 Song.OBD", "3 Song.ogg", "3 Song.obd2", "3 Song.ob", "3 Song", "3 Song.obd.bak"});
  EXPECT_EQ(Names(), (Pairs{}));
}

// Leading dots begin a hidden name, not an extension.
TEST_F(ShowDataFilesTest, AHiddenFileNamedObdIsNoSong) {
  Put({".obd"});
  EXPECT_EQ(Names(), (Pairs{}));
}

// "._1 Song.obd": what a Mac leaves on a stick beside "1 Song.obd".
TEST_F(ShowDataFilesTest, HiddenFilesAreNoSongsWhateverTheirExtension) {
  Put({"._1 Song.obd", ".hidden.obd", "1 Song.obd"});
  EXPECT_EQ(Files(), (Pairs{{"1", "1 Song.obd"}}));
}

TEST_F(ShowDataFilesTest, WithoutABlankTheWholeNameIsTheNumberAndTheNameIsEmpty) {
  Put({"7.obd"});
  EXPECT_EQ(Names(), (Pairs{{"7.obd", ""}}));
  EXPECT_EQ(Files(), (Pairs{{"7.obd", "7.obd"}}));
}

TEST_F(ShowDataFilesTest, BlanksInTheNameStay) {
  Put({"12  Two  Blanks .obd", "13 A B C.obd"});
  EXPECT_EQ(Names(), (Pairs{{"12", " Two  Blanks "}, {"13", "A B C"}}));
}

TEST_F(ShowDataFilesTest, DotsInTheNameStay) {
  Put({"4 Mr. Brown.obd", "5 1.5.obd"});
  EXPECT_EQ(Names(), (Pairs{{"4", "Mr. Brown"}, {"5", "1.5"}}));
}

TEST_F(ShowDataFilesTest, ALeadingBlankMakesTheNumberEmpty) {
  Put({" Song.obd"});
  EXPECT_EQ(Names(), (Pairs{{"", "Song"}}));
}

TEST_F(ShowDataFilesTest, OfTwoFilesWithOneNumberTheLaterInTheListingCounts) {
  Put({"1 B.obd", "1 A.obd"});
  EXPECT_EQ(Names(), (Pairs{{"1", "B"}}));
  EXPECT_EQ(Files(), (Pairs{{"1", "1 B.obd"}}));
}

TEST_F(ShowDataFilesTest, AnEmptyFolderHasNoSongs) {
  EXPECT_EQ(Files(), (Pairs{}));
}

TEST_F(ShowDataFilesTest, AFolderThatCannotBeListedIsAnError) {
  EXPECT_THROW(ListShowDataFiles(show_.Path("elsewhere")), exc::ListdirError);
}

TEST_F(ShowDataFilesTest, TheDataFolderLiesInTheShow) {
  EXPECT_EQ(GetDataFolder("/shows/tonight"), "/shows/tonight/data");
}

}  // namespace
