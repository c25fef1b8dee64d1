// Every kind of broken show, given to every verb: one clear message that names file and place, the right exit
// status, and no file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

#include "reference_suite/midi/standard_midi_file/smf_writer.h"
#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::ReadText;
using host_tests::ShowFiles;
using testing::HasSubstr;

constexpr char kMidi[] = "songs/1 Waltz.mid";
constexpr char kCues[] = "songs/1 Waltz.toml";

struct BadShow {
  const char* name;
  std::function<void(const ShowFiles&)> damage;
  const char* place;  // in the message: file, and line or byte
  const char* words;
};

void PrintTo(const BadShow& show, std::ostream* out) {
  *out << show.name;
}

std::function<void(const ShowFiles&)> Cues(const std::string& text) {
  return [text](const ShowFiles& files) { files.Write(kCues, text); };
}

std::function<void(const ShowFiles&)> MidiByte(std::size_t at, const std::string& bytes) {
  return [at, bytes](const ShowFiles& files) {
    std::string midi = ReadText(files.At(kMidi).string());
    midi.replace(at, bytes.size(), bytes);
    files.Write(kMidi, midi);
  };
}

std::function<void(const ShowFiles&)> File(const std::string& path, const std::string& text) {
  return [path, text](const ShowFiles& files) { files.Write(path, text); };
}

std::function<void(const ShowFiles&)> Without(const std::string& path) {
  return [path](const ShowFiles& files) { std::filesystem::remove_all(files.At(path)); };
}

class BadShows : public testing::TestWithParam<BadShow> {
 protected:
  BadShows() {
    files_.AddSong("1", "Waltz", 8);
    files_.AddSong("2", "Polka", 1);
    GetParam().damage(files_);
  }
  void ExpectTold(const std::string& text) {
    EXPECT_THAT(text, HasSubstr(GetParam().place));
    EXPECT_THAT(text, HasSubstr(GetParam().words));
  }
  ShowFiles files_;
};

TEST_P(BadShows, AreRefusedInWordsByEveryVerb) {
  const std::string out = files_.Beside("out.wav");
  const std::vector<std::vector<std::string>> runs{{"info", files_.Show()},
                                                   {"where", files_.Show(), "1", "1"},
                                                   {"render", files_.Show(), "-o", out},
                                                   {"play", files_.Show()}};
  for (const auto& arguments : runs) {
    SCOPED_TRACE(arguments[0]);
    const Ended run = Orbel(arguments);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    ExpectEndedInWords(run);
    ExpectTold(run.messages);
    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_FALSE(std::filesystem::exists(out + ".part"));
  }
}

TEST_P(BadShows, AreFoundByTheCheck) {
  const Ended run = Orbel({"check", files_.Show()});
  EXPECT_EQ(run.status, 5);
  ExpectTold(run.out);
}

const std::vector<BadShow> kMidiFaults{
    {"EmptyMidi", File(kMidi, ""), "songs/1 Waltz.mid", "byte 0"},
    {"MidiWithoutTracks", File(kMidi, std::string("MThd\0\0\0\6\0\0\0\0\1\xE0", 14)), "songs/1 Waltz.mid",
     "byte "},
    {"SmpteDivision", MidiByte(12, "\xE7\x28"), "songs/1 Waltz.mid", "SMPTE"},
    {"DivisionZero", MidiByte(12, std::string("\0\0", 2)), "songs/1 Waltz.mid", "byte 12"},
    {"AbsurdTrackLength", MidiByte(18, "\xFF\xFF\xFF\xF0"), "songs/1 Waltz.mid", "byte 14"},
    {"NoMidi", File(kMidi, "These are not the notes.\n"), "songs/1 Waltz.mid", "byte 0"},
    {"FolderInsteadOfTheOnlyMidi",
     [](const ShowFiles& files) {
       std::filesystem::remove(files.At(kMidi));
       std::filesystem::remove(files.At("songs/2 Polka.mid"));
       std::filesystem::remove(files.At("data/2 Polka.obd"));
       std::filesystem::create_directory(files.At(kMidi));
     },
     "songs/1 Waltz.mid", "is no regular file"}};

const std::vector<BadShow> kNumberFaults{
    {"TwoMidisWithOneNumber", File("songs/1 Other.mid", "MThd"), "songs/1 Other.mid", "songs/1 Waltz.mid"},
    {"TwoTomlsWithOneNumber",
     [](const ShowFiles& files) {
       files.Write(kCues, "");
       files.Write("songs/1 Other.toml", "");
     },
     "songs/1 Other.toml", "songs/1 Waltz.toml"},
    {"NumberThatDiffersInZeros", File("songs/01 Other.mid", "MThd"), "songs/01 Other.mid",
     "songs/1 Waltz.mid"},
    {"FileWithoutABlank", File("songs/3Galop.mid", "MThd"), "songs/3Galop.mid", "12 Waltz.mid"},
    {"TomlWithoutMidi", File("songs/3 Galop.toml", ""), "songs/3 Galop.toml", ""},
    {"UnknownNumberInTheOrder", File("show.toml", "order = [\"1\", \"9\"]\n"), "show.toml:1:15", "\"9\""},
    {"NumberTwiceInTheOrder", File("show.toml", "order = [\"1\", \"1\"]\n"), "show.toml:1:15", "\"1\""},
    {"ShowTomlIsAFolder",
     [](const ShowFiles& files) { std::filesystem::create_directory(files.At("show.toml")); }, "show.toml",
     "is no regular file"},
    {"NoSongs", Without("songs"), "songs", "NUMBER NAME.mid"}};

const std::vector<BadShow> kCueFaults{
    {"BrokenToml", Cues("[[vamp]\nfrom = \"1\"\n"), "songs/1 Waltz.toml:1", ""},
    {"UnknownTable", Cues("[[vmp]]\nfrom = \"1\"\nto = \"2\"\n"), "songs/1 Waltz.toml:1", "vamp"},
    {"UnknownKey", Cues("[[vamp]]\nfrom = \"1\"\nuntil = \"2\"\n"), "songs/1 Waltz.toml:3", "until"},
    {"WrongType", Cues("attacca = \"yes\"\n"), "songs/1 Waltz.toml:1:11", "attacca"},
    {"NumberForAPosition", Cues("[[caesura]]\nat = 3\n"), "songs/1 Waltz.toml:2:6", "position"},
    {"ScaleOutOfRange", Cues("[[tempo]]\nat = \"1\"\nscale = 9.0\n"), "songs/1 Waltz.toml:3", "scale"},
    {"BarThatDoesNotExist", Cues("[[caesura]]\nat = \"99\"\n"), "songs/1 Waltz.toml:2:6", "99"},
    {"BeatThatDoesNotExist", Cues("[[caesura]]\nat = \"2.7\"\n"), "songs/1 Waltz.toml:2:6",
     "beat 7 of bar 2"},
    {"TickPastTheEnd", Cues("[[caesura]]\nat = { tick = 99999999 }\n"), "songs/1 Waltz.toml:2:6", "99999999"},
    {"OverlappingLoops", Cues("[[vamp]]\nfrom = \"1\"\nto = \"4\"\n[[repeat]]\nfrom = \"2\"\nto = \"6\"\n"),
     "songs/1 Waltz.toml:4", "vamp"},
    {"CutIntoItself", Cues("[[cut]]\nfrom = \"4\"\nto = \"4\"\n"), "songs/1 Waltz.toml", "cut"},
    {"WrongFormat", Cues("format = 7\n"), "songs/1 Waltz.toml:1:10", "7"},
    {"CuesThatAreNoText", Cues(std::string("\0\xFF\xFE", 3)), "songs/1 Waltz.toml:1", ""},
    {"DeepNesting", Cues("a = " + std::string(100'000, '[')), "songs/1 Waltz.toml:1", ""}};

const auto kName = [](const testing::TestParamInfo<BadShow>& info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(Midi, BadShows, testing::ValuesIn(kMidiFaults), kName);
INSTANTIATE_TEST_SUITE_P(Numbers, BadShows, testing::ValuesIn(kNumberFaults), kName);
INSTANTIATE_TEST_SUITE_P(Cues, BadShows, testing::ValuesIn(kCueFaults), kName);

// At 8,000 frames a second.
struct ShortTicks {
  const char* name;
  unsigned division;
  std::vector<std::pair<unsigned, unsigned>> tempos;  // tick, microseconds a quarter note
  unsigned end;
  const char* cues;
  const char* place;
  const char* words;
  const char* cure;
};

void PrintTo(const ShortTicks& song, std::ostream* out) {
  *out << song.name;
}

class SongsWithShortTicks : public testing::TestWithParam<ShortTicks> {
 protected:
  SongsWithShortTicks() {
    files_.AddSong("1", "Waltz", 8);
    tesk_midi::SmfWriter midi(GetParam().division);
    for (const auto& [tick, tempo] : GetParam().tempos) midi.Tempo(tick, tempo);
    midi.End(GetParam().end);
    const std::vector<std::uint8_t> bytes = midi.Bytes();
    files_.Write(kMidi, std::string(bytes.begin(), bytes.end()));
    if (GetParam().cues[0] != '\0') files_.Write(kCues, GetParam().cues);
  }
  void ExpectTold(const std::string& text) const {
    EXPECT_THAT(text, HasSubstr(GetParam().place));
    EXPECT_THAT(text, HasSubstr(GetParam().words));
    EXPECT_THAT(text, HasSubstr(GetParam().cure));
    EXPECT_THAT(text, testing::Not(HasSubstr("Assertion")));
  }
  ShowFiles files_;
};

TEST_P(SongsWithShortTicks, AreFoundByTheCheckAndLeftOut) {
  const std::string out = files_.Beside("out.wav");
  const Ended check = Orbel({"check", files_.Show()});
  EXPECT_EQ(check.status, 5);
  ExpectTold(check.out);
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"render", files_.Show(), "-o", out},
        std::vector<std::string>{"render", files_.Show(), "-o", out, "--song", "1"},
        std::vector<std::string>{"play", files_.Show(), "--output", "null"}}) {
    const Ended run = Orbel(arguments);
    EXPECT_EQ(run.status, 1) << arguments[0];
    ExpectTold(run.messages);
    EXPECT_FALSE(std::filesystem::exists(out));
  }
}

// With another song beside it, that one is played.
TEST_P(SongsWithShortTicks, KeepNoOtherSongFromBeingPlayed) {
  files_.AddSong("2", "Polka", 1);
  const Ended run = Orbel({"play", files_.Show(), "--output", "file", "--device", files_.Beside("out.wav")});
  EXPECT_EQ(run.status, 0) << run.messages;
  ExpectTold(run.messages);
  EXPECT_THAT(run.messages, HasSubstr("Song 1 is left out."));
}

const auto kTicksName = [](const testing::TestParamInfo<ShortTicks>& info) {
  return std::string(info.param.name);
};
INSTANTIATE_TEST_SUITE_P(
    Ticks, SongsWithShortTicks,
    testing::Values(
        ShortTicks{"FineDivision",
                   32'767,
                   {{0, 1'500'000}},
                   65'534,
                   "",
                   "songs/1 Waltz.mid: ",
                   "from 1.1.0 (tick 0) on a tick lasts 0.366 frames: 32767 ticks a quarter note, "
                   "40 quarter notes a minute, 8000 frames a second",
                   "export the MIDI file with a division of 600"},
        ShortTicks{"OneTempoOfThem",
                   480,
                   {{0, 250'000}, {960, 100}, {1440, 250'000}},
                   15'360,
                   "",
                   "songs/1 Waltz.mid: ",
                   "from 1.3.0 (tick 960) on a tick lasts 0.002 frames: 480 ticks a quarter note, "
                   "600000 quarter notes a minute",
                   "correct the tempo in the MIDI file, for which up to 1000 can be played"},
        ShortTicks{"CaesuraWithoutAFrame",
                   2'560,
                   {{0, 300'000}},
                   20'480,
                   "[[caesura]]\nat = { tick = 9 }\n",
                   "songs/1 Waltz.toml:1: ",
                   "the caesura, 1.1.9 (tick 9), or a tick just before it, begins on no frame of "
                   "its own: a tick lasts 0.938 frames",
                   "move it by a tick, or export the MIDI file with a division of 480"}),
    kTicksName);

TEST(SongWithShortTicks, HasPlacesButNoSamples) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 8);
  tesk_midi::SmfWriter midi(32'767);
  midi.Tempo(0, 1'500'000);
  midi.End(65'534);
  const std::vector<std::uint8_t> bytes = midi.Bytes();
  files.Write(kMidi, std::string(bytes.begin(), bytes.end()));
  EXPECT_EQ(Orbel({"where", files.Show(), "1", "1.2"}).status, 0);
  const Ended run = Orbel({"where", files.Show(), "1", "sample:1"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages,
              HasSubstr("orbel: songs/1 Waltz.mid: from 1.1.0 (tick 0) on a tick lasts 0.366 "));
}

TEST(ShowWithoutData, IsToldWithItsFolder) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  std::filesystem::remove_all(files.At("data"));
  const Ended check = Orbel({"check", files.Show()});
  EXPECT_EQ(check.status, 5);
  EXPECT_THAT(check.out, HasSubstr("error: data: there is no such folder"));
  for (const char* verb : {"render", "play"}) {
    const Ended run = Orbel(verb == std::string("play") ? std::vector<std::string>{verb, files.Show()}
                                                        : std::vector<std::string>{verb, files.Show(), "-o",
                                                                                   files.Beside("out.wav")});
    EXPECT_EQ(run.status, 1);
    ExpectEndedInWords(run);
    EXPECT_THAT(run.messages, HasSubstr("NUMBER NAME.obd"));
  }
  EXPECT_FALSE(std::filesystem::exists(files.Beside("out.wav")));
}

struct BadData {
  const char* name;
  std::function<void(const std::filesystem::path&)> make;
  const char* words;
};

void PrintTo(const BadData& data, std::ostream* out) {
  *out << data.name;
}

class DataThatIsNoFolder : public testing::TestWithParam<BadData> {};

TEST_P(DataThatIsNoFolder, IsToldWithItsCure) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  std::filesystem::remove_all(files.At("data"));
  GetParam().make(files.At("data"));
  const Ended check = Orbel({"check", files.Show()});
  EXPECT_EQ(check.status, 5);
  EXPECT_EQ(check.out, std::string("error: data: ") + GetParam().words + "\n1 error, no warnings\n");
  for (const auto& arguments :
       {std::vector<std::string>{"info", files.Show()},
        std::vector<std::string>{"where", files.Show(), "1", "1"},
        std::vector<std::string>{"play", files.Show()},
        std::vector<std::string>{"render", files.Show(), "-o", files.Beside("out.wav")}}) {
    const Ended run = Orbel(arguments);
    EXPECT_EQ(run.status, 1) << arguments[0];
    ExpectEndedInWords(run);
    EXPECT_THAT(run.messages, HasSubstr(std::string("data: ") + GetParam().words));
  }
  EXPECT_FALSE(std::filesystem::exists(files.Beside("out.wav")));
}

const auto kDataName = [](const testing::TestParamInfo<BadData>& info) {
  return std::string(info.param.name);
};
INSTANTIATE_TEST_SUITE_P(
    Data, DataThatIsNoFolder,
    testing::Values(
        BadData{"File", [](const std::filesystem::path& data) { std::ofstream(data) << "not a folder"; },
                "is no folder; put a folder with the recordings in its place"},
        BadData{"Circle",
                [](const std::filesystem::path& data) { std::filesystem::create_symlink("data", data); },
                "is a link that leads back to itself; put a folder with the recordings in its place"},
        BadData{"Nowhere",
                [](const std::filesystem::path& data) { std::filesystem::create_symlink("nowhere", data); },
                "is a link that leads nowhere; put a folder with the recordings in its place"}),
    kDataName);

TEST(DataThatMayNotBeRead, IsToldWithItsCure) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  std::filesystem::permissions(files.At("data"), std::filesystem::perms::none);
  const std::string said = files.Beside("said");
  const std::string asNobody = ::geteuid() == 0 ? "setpriv --reuid 65534 --clear-groups " : "";
  const std::string command = asNobody + "'" ORBEL_PROGRAM "' check '" + files.Show() + "' >'" + said + "'";
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 5);
  EXPECT_EQ(ReadText(said),
            "error: data: may not be read by this user; give the rights to read and enter it: chmod a+rx\n"
            "1 error, no warnings\n");
  std::filesystem::permissions(files.At("data"), std::filesystem::perms::owner_all);
}

struct Stray {
  const char* name;
  const char* audio;
  const char* number;
  const char* cure;
};

void PrintTo(const Stray& stray, std::ostream* out) {
  *out << stray.name;
}

class AudioWithoutASong : public testing::TestWithParam<Stray> {};

TEST_P(AudioWithoutASong, IsToldWithItsCureByEveryVerbThatPlays) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  files.Write(std::string("data/") + GetParam().audio, "no audio");
  const std::string told = std::string("data/") + GetParam().audio + ": " + GetParam().cure;
  const Ended check = Orbel({"check", files.Show()});
  EXPECT_EQ(check.status, 5);
  EXPECT_THAT(check.out, HasSubstr("error: " + told));
  for (const auto& arguments :
       {std::vector<std::string>{"render", files.Show(), "-o", files.Beside("out.wav")},
        std::vector<std::string>{"play", files.Show(), "--output", "null"}}) {
    const Ended run = Orbel(arguments);
    EXPECT_EQ(run.status, 1);
    ExpectEndedInWords(run);
    EXPECT_THAT(run.messages, HasSubstr(std::string("orbel: No midi data found for song number ") +
                                        GetParam().number + "\n       " + told));
  }
}

const auto kStrayName = [](const testing::TestParamInfo<Stray>& info) {
  return std::string(info.param.name);
};
INSTANTIATE_TEST_SUITE_P(
    Audio, AudioWithoutASong,
    testing::Values(
        Stray{"UnknownNumber", "7 Lost.obd", "7",
              "there is no song 7, so the show cannot be opened; add \"songs/7 NAME.mid\", or take this file "
              "out"},
        Stray{
            "NoBlank", "3Galop.obd", "3Galop.obd",
            "the name has no blank behind the song's number, so the show cannot be opened; rename it to \"3 "
            "Galop.obd\", or take it out"},
        Stray{"NoNumber", "Galop.obd", "Galop.obd",
              "the name has no blank behind the song's number, so the show cannot be opened; rename it to "
              "\"NUMBER NAME.obd\", or take it out"}),
    kStrayName);

TEST(MidiInCapitals, IsNamedByEveryVerbThatPlays) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  files.AddSong("2", "Polka", 1);
  std::filesystem::rename(files.At("songs/2 Polka.mid"), files.At("songs/2 Polka.MID"));
  const Ended run = Orbel({"render", files.Show(), "-o", files.Beside("out.wav")});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr("orbel: No midi data found for song number 2\n"));
  EXPECT_THAT(run.messages,
              HasSubstr("songs/2 Polka.MID: is not read; the name of a song's MIDI file ends in "));
}

// The other song is shown and played.
TEST(UnreadableMidi, IsNoSongToShow) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  files.AddSong("2", "Polka", 1);
  std::filesystem::remove(files.At(kMidi));
  std::filesystem::create_directory(files.At(kMidi));
  const std::string why = "songs/1 Waltz.mid: is no regular file; put a file of that name there.";
  const Ended info = Orbel({"info", files.Show()});
  EXPECT_EQ(info.status, 1);
  EXPECT_THAT(info.out, HasSubstr("1  Waltz\n    cannot be read: " + why));
  EXPECT_THAT(info.out, HasSubstr("2  Polka  0:01.000\n"));
  EXPECT_THAT(info.out, testing::Not(HasSubstr("120 quarters")));
  EXPECT_THAT(info.messages, HasSubstr("orbel: " + why));
  for (const auto& arguments : {std::vector<std::string>{"info", files.Show(), "--song", "1"},
                                std::vector<std::string>{"where", files.Show(), "1", "1"}}) {
    const Ended run = Orbel(arguments);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.messages, HasSubstr("orbel: " + why));
  }
  EXPECT_THAT(Orbel({"info", "--json", files.Show()}).out, HasSubstr("\"problem\": \"" + why));
  EXPECT_EQ(Orbel({"where", files.Show(), "2", "1"}).status, 0);
}

// The reader itself is cut at every byte by its own tests: here a cut must come through the program as words.
TEST(CutOffMidi, IsRefusedOrWarnedOfAtEveryByte) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  const std::string whole = ReadText(files.At(kMidi).string());
  int refused = 0;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    SCOPED_TRACE(length);
    files.Write(kMidi, whole.substr(0, length));
    const Ended run = Orbel({"info", files.Show()});
    EXPECT_THAT(run.status, testing::AnyOf(0, 1));
    refused += run.status == 1 ? 1 : 0;
    ExpectEndedInWords(run);
    EXPECT_THAT(run.messages, HasSubstr("songs/1 Waltz.mid"));
  }
  EXPECT_GT(refused, static_cast<int>(whole.size()) / 2);
}

}  // namespace
}  // namespace faults
