// Nothing of anybody else is written over.

#include "host/demo/demo_folder.h"

#include <gtest/gtest.h>

#include "tests/host/demo/scratch_folder.h"

namespace {

namespace fs = std::filesystem;
using orbel::host::DemoError;
using orbel::host::demo::DemoFolder;

const std::set<std::string> kNames{"show.toml", "songs/1 A.mid", "data/1 A.obd"};

class DemoFolderTest : public testing::Test {
 protected:
  std::string Refusal(const fs::path& folder) const {
    try {
      DemoFolder(folder, kNames, "# Mark");
    } catch (const DemoError& error) {
      return error.what();
    }
    return "accepted";
  }
  std::string Refusal() const { return Refusal(folder_.Path()); }

  std::string Foreign(const std::string& name) const {
    return folder_.Path().string() + ": holds \"" + name +
           "\", which is not part of the demo; choose an empty folder, or one that does not exist yet.";
  }

  ScratchFolder folder_;
};

TEST_F(DemoFolderTest, AMissingFolderIsMadeWithItsSubfolders) {
  DemoFolder folder(folder_.Path() / "a" / "b", kNames, "# Mark");
  EXPECT_TRUE(fs::is_directory(folder_.Path() / "a" / "b" / "songs"));
  EXPECT_TRUE(fs::is_directory(folder_.Path() / "a" / "b" / "data"));
  folder.Write("songs/1 A.mid", {'x'});
  EXPECT_EQ(BytesOfFile(folder_.Path() / "a" / "b" / "songs" / "1 A.mid"), std::vector<std::uint8_t>{'x'});
}

TEST_F(DemoFolderTest, WhatIsNotKeptIsTakenAwayWithTheFoldersThatWereMadeForIt) {
  {
    DemoFolder folder(folder_.Path() / "a" / "b", kNames, "# Mark");
    folder.Write("show.toml", {'x'});
    folder.Write("songs/1 A.mid", {'x'});
  }
  EXPECT_TRUE(fs::is_empty(folder_.Path()));
  {
    DemoFolder folder(folder_.Path() / "a" / "b", kNames, "# Mark");
    folder.Write("songs/1 A.mid", {'x'});
    folder.Keep();
  }
  EXPECT_EQ(FilesIn(folder_.Path()), std::vector<std::string>{"a/b/songs/1 A.mid"});
}

TEST_F(DemoFolderTest, WhatWasThereBeforeStaysWhenTheRestIsTakenAway) {
  PutFile(folder_.Path() / "show.toml", "# Mark\n");
  PutFile(folder_.Path() / "songs/1 A.mid", "old");
  {
    DemoFolder folder(folder_.Path(), kNames, "# Mark");
    folder.Write("songs/1 A.mid", {'x'});
    folder.Write("data/1 A.obd", {'x'});
  }
  EXPECT_EQ(FilesIn(folder_.Path()), std::vector<std::string>({"show.toml", "songs/1 A.mid"}));
  EXPECT_FALSE(fs::exists(folder_.Path() / "data"));
}

TEST_F(DemoFolderTest, AnEmptyFolderIsTaken) {
  EXPECT_EQ(Refusal(), "accepted");
}

TEST_F(DemoFolderTest, AnEarlierDemoIsTaken) {
  PutFile(folder_.Path() / "show.toml", "# Mark and more\nformat = 1\n");
  PutFile(folder_.Path() / "songs/1 A.mid", "x");
  PutFile(folder_.Path() / "data/1 A.obd", "x");
  EXPECT_EQ(Refusal(), "accepted");
}

TEST_F(DemoFolderTest, ADemoThatWasBrokenOffIsTaken) {
  PutFile(folder_.Path() / "show.toml", "# Mark\n");
  PutFile(folder_.Path() / "data/1 A.obd.part", "x");
  EXPECT_EQ(Refusal(), "accepted");
}

TEST_F(DemoFolderTest, AForeignFileIsNamed) {
  PutFile(folder_.Path() / "show.toml", "# Mark\n");
  PutFile(folder_.Path() / "letter.txt", "x");
  EXPECT_EQ(Refusal(), Foreign("letter.txt"));
  EXPECT_EQ(FilesIn(folder_.Path()), std::vector<std::string>({"letter.txt", "show.toml"}));
}

TEST_F(DemoFolderTest, AForeignFileInASubfolderIsNamed) {
  PutFile(folder_.Path() / "show.toml", "# Mark\n");
  PutFile(folder_.Path() / "songs/2 Mine.mid", "x");
  EXPECT_EQ(Refusal(), Foreign("songs/2 Mine.mid"));
}

TEST_F(DemoFolderTest, AForeignFolderIsNamed) {
  fs::create_directory(folder_.Path() / "pictures");
  EXPECT_EQ(Refusal(), Foreign("pictures"));
}

TEST_F(DemoFolderTest, AFolderWhereAFileBelongsIsForeign) {
  fs::create_directory(folder_.Path() / "show.toml");
  EXPECT_EQ(Refusal(), Foreign("show.toml"));
}

TEST_F(DemoFolderTest, LinksAreForeign) {
  fs::create_directory_symlink("/", folder_.Path() / "songs");
  EXPECT_EQ(Refusal(), Foreign("songs"));
}

TEST_F(DemoFolderTest, AShowOfSomebodysOwnIsLeftAlone) {
  const std::string text =
      folder_.Path().string() +
      ": holds a show that was not written by \"orbel demo\"; choose an empty folder, or one "
      "that does not exist yet.";
  PutFile(folder_.Path() / "show.toml", "format = 1\n# Mark\n");
  EXPECT_EQ(Refusal(), text);
  fs::remove(folder_.Path() / "show.toml");
  PutFile(folder_.Path() / "songs/1 A.mid", "x");
  EXPECT_EQ(Refusal(), text);
}

TEST_F(DemoFolderTest, AFileInPlaceOfTheFolderIsTold) {
  PutFile(folder_.Path() / "file", "x");
  PutFile(folder_.Path() / "empty", "");
  EXPECT_EQ(Refusal(folder_.Path() / "file"),
            (folder_.Path() / "file").string() +
                ": not read as a folder (Not a directory); choose another place for the demo.");
  EXPECT_EQ(Refusal(folder_.Path() / "empty"),
            (folder_.Path() / "empty").string() +
                ": not made as a folder (Not a directory); choose another place for the demo.");
  EXPECT_EQ(Refusal(folder_.Path() / "file" / "show"),
            (folder_.Path() / "file" / "show").string() +
                ": not made as a folder (Not a directory); choose another place for the demo.");
}

TEST_F(DemoFolderTest, ALinkInACircleIsTold) {
  fs::create_symlink("b", folder_.Path() / "a");
  fs::create_symlink("a", folder_.Path() / "b");
  EXPECT_EQ(
      Refusal(folder_.Path() / "a"),
      (folder_.Path() / "a").string() +
          ": not read as a folder (Too many levels of symbolic links); choose another place for the demo.");
}

}  // namespace
