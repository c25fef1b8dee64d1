#include "suite/midi/load_show.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstring>

#include "tests/reference_suite/midi/show_folder/show_on_disk.h"
#include "tests/support/throws_with_text.h"

namespace {

using made_show::ShowOnDisk;
using tesk_midi::LoadShow;
using tesk_midi::ShowError;
using test_support::ThrowsWithText;
using testing::ElementsAre;

TEST(LoadShow, FolderThatIsNotThere) {
  EXPECT_TRUE(ThrowsWithText<ShowError>(
      [] { LoadShow("no/such\nfolder"); },
      "the show folder \"no/such\\x0afolder\" is not there or may not be entered; check its name."));
}

TEST(LoadShow, FileInsteadOfAFolder) {
  const ShowOnDisk show;
  show.Write("file", "");
  const std::string path = show.Name() + "/file";
  EXPECT_TRUE(ThrowsWithText<ShowError>([&] { LoadShow(path); },
                                        "\"" + path + "\" is no folder; a show is a folder."));
}

TEST(LoadShow, ShowWithoutSongsFolder) {
  const ShowOnDisk show;
  std::filesystem::remove(show.Path() / "songs");
  EXPECT_THAT(show.Problems(),
              ElementsAre("songs: the show has no such folder; put each song's MIDI file there as "
                          "\"NUMBER NAME.mid\"."));
}

TEST(LoadShow, FileInsteadOfTheSongsFolder) {
  const ShowOnDisk show;
  std::filesystem::remove(show.Path() / "songs");
  show.Write("songs", "");
  EXPECT_THAT(show.Problems(),
              ElementsAre("songs: Unable to list folder \"" + show.Name() +
                          "/songs\": Not a directory; see that it is a folder that may be read."));
}

TEST(LoadShow, SongsFolderThatLeadsToItself) {
  const ShowOnDisk show;
  std::filesystem::remove(show.Path() / "songs");
  std::filesystem::create_directory_symlink("songs", show.Path() / "songs");
  EXPECT_THAT(show.Problems(),
              ElementsAre("songs: Unable to list folder \"" + show.Name() +
                          "/songs\": Too many levels of symbolic links; see that it is a folder that may be "
                          "read."));
}

TEST(LoadShow, ShowWithoutAnySong) {
  const ShowOnDisk show;
  show.Write("songs/README", "nothing here");
  EXPECT_THAT(show.Problems(),
              ElementsAre("songs: there is no song; put each song's MIDI file there as \"NUMBER "
                          "NAME.mid\"."));
}

TEST(LoadShow, EveryProblemOfEveryFileIsThrown) {
  const ShowOnDisk show;
  show.Write("show.toml", "titel = 1\norder = [\"9\"]\n");
  show.WriteMidi("songs/1 A.mid");
  show.Write("songs/1 A.toml", "atacca = true\n[[caesura]]\nat = \"99\"\n");
  show.Write("songs/2 B.mid", "no MIDI");
  show.Write("songs/2 B.toml", "skip = 1\n");
  show.Write("songs/3 C.toml", "");
  show.Write("songs/4 D.mid", made_show::MidiText().End(1920));
  const std::vector<std::string> problems = show.Problems();
  ASSERT_EQ(problems.size(), 8u);
  EXPECT_EQ(problems[0],
            "songs/3 C.toml: song \"3\" has no MIDI file; add \"songs/3 C.mid\" or remove this file.");
  EXPECT_EQ(problems[1], "songs/1 A.toml:1:1: unknown key \"atacca\"; did you mean \"attacca\"?");
  EXPECT_EQ(problems[2], "songs/1 A.toml:3:6: \"at\": bar 99 does not exist: the song has bars 1 to 48.");
  EXPECT_EQ(
      problems[3],
      "songs/2 B.toml:1:8: \"skip\" must be true or false, but is a whole number; write skip = true, for "
      "instance.");
  EXPECT_THAT(problems[4], testing::StartsWith("songs/2 B.mid: byte 0: "));
  EXPECT_EQ(problems[5], "show.toml:1:1: unknown key \"titel\"; did you mean \"title\"?");
  EXPECT_EQ(problems[6], "show.toml:2:10: there is no song \"9\" in songs/; take it out of \"order\".");
  EXPECT_THAT(problems[7], testing::StartsWith("warning: songs/4 D.mid: byte 0: no tempo"));
}

TEST(LoadShow, WarningsAboutBarsNameTheSongsFile) {
  const ShowOnDisk show;
  show.Write("songs/1 A.mid",
             made_show::MidiText().Tempo(0, 500'000).Meter(0, 4, 4).Meter(480, 3, 4).End(3840));
  EXPECT_THAT(show.Problems(),
              ElementsAre("warning: songs/1 A.mid: the meter changes to 3/4 within bar 1; a new bar begins "
                          "there, at tick 480."));
}

TEST(LoadShow, FirstErrorIsTheTextOfTheException) {
  const ShowOnDisk show;
  show.WriteMidi("songs/1 A.mid");
  show.Write("songs/1 A.toml", "atacca = true\n");
  show.Write("songs/0 Z.mid", made_show::MidiText().End(1920));  // a warning
  EXPECT_TRUE(ThrowsWithText<ShowError>(
      [&] { show.Load(); }, "songs/1 A.toml:1:1: unknown key \"atacca\"; did you mean \"attacca\"?"));
}

TEST(LoadShow, SlashAtTheEndOfThePath) {
  const ShowOnDisk show;
  show.WriteMidi("songs/1 A.mid");
  EXPECT_TRUE(LoadShow(show.Name() + "/").showData->HasSong("1"));
}

TEST(LoadShow, SongsFolderMayBeALink) {
  const ShowOnDisk show;
  show.WriteMidi("songs/1 A.mid");
  std::filesystem::rename(show.Path() / "songs", show.Path() / "elsewhere");
  std::filesystem::create_directory_symlink("elsewhere", show.Path() / "songs");
  EXPECT_TRUE(show.Load().showData->HasSong("1"));
}

TEST(LoadShow, ShowTomlThatCannotBeRead) {
  const ShowOnDisk show;
  show.WriteMidi("songs/1 A.mid");
  std::filesystem::create_directory(show.Path() / "show.toml");
  EXPECT_THAT(show.Problems(), ElementsAre("show.toml: is no regular file; put a file of that name there."));
  std::filesystem::remove(show.Path() / "show.toml");
  std::filesystem::create_symlink("nowhere", show.Path() / "show.toml");
  EXPECT_THAT(show.Problems(),
              ElementsAre("show.toml: cannot be opened (No such file or directory); see that the file "
                          "is there and that it may be read."));
}

// The system does not say that it is not there, so that it is not taken for a show without one.
TEST(LoadShow, ShowTomlWhosePathIsTooLong) {
  const ShowOnDisk show;
  std::string path = show.Name();
  while (path.size() + std::strlen("/songs") < PATH_MAX - 2) path += path.size() % 2 == 0 ? "/." : "/";
  try {
    tesk_midi::LoadShow(path);
    FAIL();
  } catch (const tesk_midi::ShowError& error) {
    ASSERT_EQ(error.GetProblems().size(), 2u);
    EXPECT_EQ(
        ToString(error.GetProblems()[1]),
        "show.toml: cannot be opened (File name too long); see that the file is there and that it may be "
        "read.");
  }
}

}  // namespace
