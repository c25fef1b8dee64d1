// Files as they should not be: what the operator reads, and what still plays.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <locale>
#include <random>

#include "tests/reference_suite/midi/show_folder/show_on_disk.h"

namespace {

using made_show::MidiText;
using made_show::ShowOnDisk;
using testing::ElementsAre;
using testing::Pair;

// A show whose song 1 is sound; song 2 is what a test makes of it.
class SoundSongBeside : public testing::Test {
 protected:
  SoundSongBeside() { show_.WriteMidi("songs/1 Sound.mid"); }
  std::filesystem::path At(const std::string& file) const { return show_.Path() / file; }

  // Song 2 is in the show, out of the way, and told of with this text.
  void ExpectLeftOut(const std::string& text) const {
    EXPECT_THAT(show_.Problems(), ElementsAre(text));
    const tesk_midi::LoadedShow loaded = show_.Load();
    EXPECT_FALSE(loaded.warnings.at(0).isWarning);
    EXPECT_EQ(loaded.warnings.at(0).songNumber, "2");
    EXPECT_TRUE(loaded.showData->IsLeftOut("2"));
    EXPECT_FALSE(loaded.showData->IsLeftOut("1"));
    EXPECT_THAT(loaded.showData->GetSongNamesBySongNumber(),
                ElementsAre(Pair("1", "Sound"), Pair("2", "Odd")));
    EXPECT_THAT(loaded.showData->GetRunningOrder(), ElementsAre("1", "2"));
    const TL::Timeline& timeline = loaded.showData->GetSong("2").GetTimeline();
    EXPECT_EQ(timeline.GetTempos()[0].abs_time(), 0u);
    EXPECT_EQ(timeline.GetMidiEndTicks(), 1920u);
    EXPECT_EQ(timeline.GetBarsBeats().GetSize(), 1u);
    EXPECT_EQ(timeline.GetMeters().GetSize(), 1u);
  }

  ShowOnDisk show_;
};

const char kNoRegularFile[] = "is no regular file; put a file of that name there. The song is left out.";

TEST_F(SoundSongBeside, PipeIsNotWaitedFor) {
  ASSERT_EQ(::mkfifo(At("songs/2 Odd.mid").c_str(), 0600), 0);
  ExpectLeftOut(std::string("songs/2 Odd.mid: ") + kNoRegularFile);
}

TEST_F(SoundSongBeside, FolderWithTheNameOfAFile) {
  std::filesystem::create_directory(At("songs/2 Odd.mid"));
  ExpectLeftOut(std::string("songs/2 Odd.mid: ") + kNoRegularFile);
}

TEST_F(SoundSongBeside, LinkToADeviceIsNotRead) {
  std::filesystem::create_symlink("/dev/zero", At("songs/2 Odd.mid"));
  ExpectLeftOut(std::string("songs/2 Odd.mid: ") + kNoRegularFile);
}

TEST_F(SoundSongBeside, LinkThatLeadsToItself) {
  std::filesystem::create_symlink("2 Odd.mid", At("songs/2 Odd.mid"));
  ExpectLeftOut(
      "songs/2 Odd.mid: cannot be opened (Too many levels of symbolic links); "
      "replace the link, which leads in a circle, by the file itself. The song is left out.");
}

// The show is there by a name of as many letters as the system takes, and "songs" in it is beyond them.
TEST_F(SoundSongBeside, FolderThatCannotBeListedForWhatIsNoMatterOfRightsIsToldInTheSystemsWords) {
  std::string path = show_.Path().string();
  while (path.size() < 4'092) path += path.size() % 2 == 0 ? "/." : "/";
  try {
    tesk_midi::LoadShow(path);
    ADD_FAILURE() << "it was listed";
  } catch (const std::exception& error) {
    EXPECT_THAT(error.what(), testing::HasSubstr("File name too long"));
    EXPECT_THAT(error.what(), testing::Not(testing::HasSubstr("may be read")));
  }
}

TEST_F(SoundSongBeside, FolderThatContainsItselfIsNotEntered) {
  std::filesystem::create_directory_symlink("..", At("songs/loop"));
  EXPECT_THAT(show_.Problems(), testing::IsEmpty());
}

TEST_F(SoundSongBeside, HiddenFilesAreNoSongs) {
  show_.WriteMidi("songs/._2 Odd.mid");
  show_.WriteMidi("songs/.2 Odd.mid");
  std::ofstream(At("songs/.DS_Store")) << "not ours";
  EXPECT_THAT(show_.Problems(), testing::IsEmpty());
}

TEST_F(SoundSongBeside, LinkThatLeadsNowhere) {
  std::filesystem::create_symlink("nowhere", At("songs/2 Odd.mid"));
  ExpectLeftOut(
      "songs/2 Odd.mid: cannot be opened (No such file or directory); see that the file is there and that it "
      "may be read. The song is left out.");
}

TEST_F(SoundSongBeside, CuesThatCannotBeReadLeaveTheSongOutToo) {
  show_.WriteMidi("songs/2 Odd.mid");
  ASSERT_EQ(::mkfifo(At("songs/2 Odd.toml").c_str(), 0600), 0);
  ExpectLeftOut(std::string("songs/2 Odd.toml: ") + kNoRegularFile);
}

// Root may read everything: the test steps down for the while.
class WithoutRoot {
 public:
  WithoutRoot() : done_(::geteuid() != 0 || ::seteuid(65534) == 0) {}
  ~WithoutRoot() { static_cast<void>(::seteuid(::getuid())); }
  WithoutRoot(const WithoutRoot&) = delete;
  WithoutRoot& operator=(const WithoutRoot&) = delete;
  bool IsDone() const { return done_; }

 private:
  bool done_;
};

TEST_F(SoundSongBeside, FileThatMayNotBeRead) {
  show_.WriteMidi("songs/2 Odd.mid");
  std::filesystem::permissions(show_.Path(), std::filesystem::perms::all);
  std::filesystem::permissions(At("songs/2 Odd.mid"), std::filesystem::perms::none);
  const WithoutRoot down;
  ASSERT_TRUE(down.IsDone());
  ExpectLeftOut(
      "songs/2 Odd.mid: cannot be opened (Permission denied); see that the file is there and that it may be "
      "read. The song is left out.");
}

TEST_F(SoundSongBeside, FolderThatMayNotBeRead) {
  std::filesystem::permissions(show_.Path(), std::filesystem::perms::all);
  std::filesystem::permissions(At("songs"), std::filesystem::perms::none);
  std::vector<std::string> problems;
  {
    const WithoutRoot down;
    ASSERT_TRUE(down.IsDone());
    problems = show_.Problems();
  }
  std::filesystem::permissions(At("songs"), std::filesystem::perms::all);
  EXPECT_THAT(problems,
              ElementsAre("songs: Unable to list folder \"" + show_.Name() +
                          "/songs\": Permission denied; see that it is a folder that may be read."));
}

TEST(ShowFaults, ShowOfWhichNoSongCanBeReadIsRefused) {
  const ShowOnDisk show;
  std::filesystem::create_directory(show.Path() / "songs/2 Odd.mid");
  EXPECT_THROW(show.Load(), tesk_midi::ShowError);
  EXPECT_THAT(show.Problems(), ElementsAre(std::string("songs/2 Odd.mid: ") + kNoRegularFile));
}

TEST(ShowFaults, ErrorsComeBeforeSongsThatAreLeftOutAndThoseBeforeWarnings) {
  const ShowOnDisk show;
  show.WriteMidi("songs/1 A.mid");
  show.Write("songs/1 A.toml", "x = 1");
  std::filesystem::create_directory(show.Path() / "songs/2 B.mid");
  show.Write("songs/0 C.mid", MidiText().End(1920));
  const std::vector<std::string> problems = show.Problems();
  ASSERT_EQ(problems.size(), 3u);
  EXPECT_THAT(problems[0], testing::StartsWith("songs/1 A.toml:1:1: unknown key \"x\""));
  EXPECT_THAT(problems[1], testing::StartsWith("songs/2 B.mid: is no regular file"));
  EXPECT_THAT(problems[2], testing::StartsWith("warning: songs/0 C.mid: byte 0: no tempo"));
}

TEST(ShowFaults, NamesThatAreNotUtf8OrCommandATerminalAreLoadedAndShownEscaped) {
  const ShowOnDisk show;
  show.WriteMidi("songs/2 \xff\xfe.mid");
  show.WriteMidi("songs/3 \x1b[2J\n.mid");
  const std::string name(255 - 6, 'x');
  show.WriteMidi("songs/4 " + name + ".mid");
  EXPECT_THAT(show.Load().showData->GetSongNamesBySongNumber(),
              ElementsAre(Pair("2", "\\xff\\xfe"), Pair("3", "\\x1b[2J\\x0a"), Pair("4", name)));
  show.Write("songs/3 \x1b.toml", "\x1b");
  const std::vector<std::string> problems = show.Problems();
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_EQ(problems[0].find_first_of("\x1b\n"), std::string::npos) << problems[0];
  EXPECT_THAT(problems[0], testing::StartsWith("songs/3 \\x1b.toml:1:1: is not TOML: "));
}

TEST(ShowFaults, GapsAndHugeNumbersAreFine) {
  const ShowOnDisk show;
  show.WriteMidi("songs/0 a.mid");
  show.WriteMidi("songs/7 b.mid");
  show.WriteMidi("songs/1000000000 c.mid");
  EXPECT_THAT(show.Load().showData->GetRunningOrder(), ElementsAre("0", "7", "1000000000"));
}

TEST(ShowFaults, TempoZeroAndDivisionZeroAreRefusedWithFileAndByte) {
  const ShowOnDisk show;
  show.Write("songs/1 a.mid", MidiText().Tempo(0, 0).End(1920));
  show.Write("songs/2 b.mid", MidiText().Tempo(0, 500'000).End(1920, 0));
  const std::vector<std::string> problems = show.Problems();
  ASSERT_EQ(problems.size(), 2u);
  EXPECT_THAT(problems[0], testing::StartsWith("songs/1 a.mid: byte "));
  EXPECT_THAT(problems[1], testing::StartsWith("songs/2 b.mid: byte 12: "));
}

TEST(ShowFaults, TenThousandTemposKeepTheirExactLength) {
  const ShowOnDisk show;
  MidiText midi;
  std::uint64_t microseconds = 0;  // times 480
  for (std::uint32_t i = 0; i < 10'000; ++i) {
    midi.Tempo(i * 10, 400'000 + i);
    microseconds += std::uint64_t{10} * (400'000 + i);
  }
  show.Write("songs/1 a.mid", midi.End(100'000));
  const auto loaded = show.Load();
  const TL::Timeline& timeline = loaded.showData->GetSong("1").GetTimeline();
  ASSERT_EQ(timeline.GetTempos().GetSize(), 10'000u);
  std::uint64_t loadedMicroseconds = 0;
  for (std::size_t i = 0; i < 10'000; ++i) {
    const unsigned next =
        i + 1 == 10'000 ? timeline.GetMidiEndTicks() : timeline.GetTempos()[i + 1].abs_time();
    loadedMicroseconds += std::uint64_t{next - timeline.GetTempos()[i].abs_time()} *
                          timeline.GetTempos()[i].GetMicrosecondsPerQuarter();
  }
  EXPECT_EQ(loadedMicroseconds, microseconds);
  EXPECT_EQ(loaded.showData->GetSong("1").GetPulsesPerQuarterNote(), 480);
}

TEST(ShowFaults, EndFarBehindTheMusicIsRefusedBeforeItCostsMemory) {
  const ShowOnDisk show;
  show.Write("songs/1 a.mid", MidiText().Tempo(0, 500'000).Meter(0, 1, 64).End(0x0FFFFFFF));
  EXPECT_THAT(show.Problems(),
              ElementsAre("songs/1 a.mid: the song has more than 100000 bars; see that its meters are "
                          "right and that no track ends long after the music."));
}

TEST(ShowFaults, FilesThatAreTooLargeAreRefused) {
  const ShowOnDisk show;
  show.WriteMidi("songs/1 a.mid");
  show.Write("songs/1 a.toml", "");
  std::filesystem::resize_file(show.Path() / "songs/1 a.toml", std::uintmax_t{1} << 33);
  show.Write("songs/2 b.mid", "MThd");
  std::filesystem::resize_file(show.Path() / "songs/2 b.mid", std::uintmax_t{1} << 33);
  const std::vector<std::string> problems = show.Problems();
  ASSERT_EQ(problems.size(), 2u);
  EXPECT_EQ(problems[0], "songs/1 a.toml: is larger than 1048576 bytes; see that it is the right file.");
  EXPECT_THAT(problems[1], testing::StartsWith("songs/2 b.mid: byte 16777216: more than 16777216 bytes"));
}

TEST(ShowFaults, NumbersAreReadAndWrittenAlikeInEveryLocale) {
  class Comma : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
  const auto song = made_show::SongOfToml("[[tempo]]\nat = { tick = 12345 }\nscale = 0.95\n");
  const auto problems = made_show::ProblemsOfToml("[[tempo]]\nat = { tick = 99999999 }\nscale = 4.5\n");
  std::locale::global(before);
  EXPECT_EQ(song.Log().tempoScales[0].GetScale(), 0.95);
  EXPECT_EQ(song.Log().tempoScales[0].abs_time(), 12345u);
  EXPECT_THAT(problems, ElementsAre("3:9: \"scale\" must lie between 0.25 and 4, but is 4.5."));
}

// Whatever stands in a file, the answer is a show or words. The seed is fixed.
TEST(ShowFaults, DamagedCuesAreAnsweredInWords) {
  const std::string sound =
      "# The cues of a waltz, and a good deal of what somebody had to say about each of them.\nformat = 1\n"
      "attacca = true\nfirst_bar = 0\naudio_start = \"0.3\"\n[[tempo]]  # slower than recorded, as they all "
      "do\n"
      "at = \"17\"\nscale = 0.95\n[[vamp]]\nfrom = \"9\"\nto = \"13\"\nexit = \"bar\"\n"
      "[[cut]]\nfrom = { tick = 60000 }\nto = \"end\"\n[[repeat]]\nfrom = \"10\"\nto = \"12\"\npasses = 3\n";
  const ShowOnDisk show;
  show.WriteMidi("songs/3 Waltz.mid");
  show.Write("songs/3 Waltz.toml", sound);
  EXPECT_THAT(show.Problems(), testing::IsEmpty());
  std::mt19937 engine(20);
  const auto dice = [&engine] { return static_cast<unsigned>(engine()); };
  int loaded = 0;
  int refused = 0;
  for (int run = 0; run < 1000; ++run) {
    std::string text = sound;
    for (unsigned i = 1 + dice() % 3; i > 0; --i) {
      const std::size_t at = dice() % text.size();
      const unsigned how = dice() % 4;
      if (how == 0) text[at] = static_cast<char>(dice());
      if (how == 1) text.erase(at, 1 + dice() % 8);
      if (how == 2) text.insert(at, text.substr(dice() % text.size(), dice() % 30));
      if (how == 3) text[at] = text[dice() % text.size()];
    }
    show.Write("songs/3 Waltz.toml", text);
    try {
      show.Load();
      ++loaded;
    } catch (const tesk_midi::ShowError& error) {
      ASSERT_FALSE(error.GetProblems().empty());
      ++refused;
    }
  }
  EXPECT_GT(loaded, 50);
  EXPECT_GT(refused, 500);
}

}  // namespace
