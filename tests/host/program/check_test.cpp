#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <nlohmann/json.hpp>

#include "tests/host/run_orbel.h"
#include "tests/host/show_files.h"

namespace host_tests {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class Check : public testing::Test {
 protected:
  Ended Look() { return Orbel({"check", files_.Show()}); }
  ShowFiles files_;
};

TEST_F(Check, AGoodShowHasNothingToSay) {
  files_.AddSong("1", "Waltz", 4);
  const Ended run = Look();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "no errors, no warnings\n");
  EXPECT_EQ(run.messages, "");
}

// A Mac leaves such beside every file on a stick.
TEST_F(Check, HiddenFilesBesideSongsAreNoneOfTheShow) {
  files_.AddSong("1", "Waltz", 4);
  for (const char* hidden :
       {"data/._1 Waltz.obd", "data/.DS_Store", "songs/._1 Waltz.mid", "songs/._1 Waltz.toml"})
    files_.Write(hidden, "Mac OS X");
  const Ended run = Look();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "no errors, no warnings\n");
  const Ended render = Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  EXPECT_EQ(render.status, 0) << render.messages;
  EXPECT_EQ(ReadFloatWav(files_.Beside("out.wav")), FramesFromZero(4LL * ShowFiles::kRate));
}

TEST_F(Check, AudioThatCannotBeDecodedIsAnErrorWithItsFile) {
  files_.AddSong("1", "Waltz", 4);
  files_.AddSong("2", "Polka", 4);
  files_.Write("data/2 Polka.obd", "this is no audio");
  const Ended run = Look();
  EXPECT_EQ(run.status, 5);
  EXPECT_THAT(run.out,
              HasSubstr("error: data/2 Polka.obd: this is not audio that can be decoded. Use Ogg Vorbis, Ogg "
                        "Opus, FLAC, WAV, AIFF or MP3. The song is left out; replace the file\n"));
  EXPECT_THAT(run.out, EndsWith("1 error, no warnings\n"));
}

TEST_F(Check, AudioWithoutASongIsAnErrorWithACure) {
  files_.AddSong("1", "Waltz", 4);
  WriteWav(files_.At("data/7 Polka.obd"), FramesFromZero(100), ShowFiles::kRate);
  const Ended run = Look();
  EXPECT_EQ(run.status, 5);
  EXPECT_THAT(run.out,
              HasSubstr("error: data/7 Polka.obd: there is no song 7, so the show cannot be opened; add "
                        "\"songs/7 NAME.mid\", or take this file out\n"));
}

TEST_F(Check, AudioWhoseNameBeginsWithABlankHasNoNumber) {
  files_.AddSong("1", "Waltz", 4);
  WriteWav(files_.At("data/ Polka.obd"), FramesFromZero(100), ShowFiles::kRate);
  const std::string words =
      "data/ Polka.obd: the name begins with a blank where the song's number belongs, so the show cannot be "
      "opened; rename it to \"NUMBER Polka.obd\", or take it out\n";
  const Ended run = Look();
  EXPECT_EQ(run.status, 5);
  EXPECT_THAT(run.out, HasSubstr("error: " + words));
  const Ended render = Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  EXPECT_EQ(render.status, 1);
  EXPECT_THAT(render.messages, HasSubstr(words));
}

TEST_F(Check, TwoAudioFilesWithOneNumberAreAnErrorThatNamesBoth) {
  files_.AddSong("1", "Waltz", 4);
  WriteWav(files_.At("data/1 Alternative.obd"), FramesFromZero(32000), ShowFiles::kRate);
  const Ended run = Look();
  EXPECT_EQ(run.status, 5);
  const std::string words =
      "data/1 Alternative.obd: has the same number as \"data/1 Waltz.obd\", which is played instead; remove "
      "one of the two\n";
  EXPECT_THAT(run.out, HasSubstr("error: " + words));
  // It can be played, so who plays it is only warned.
  const Ended render = Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  EXPECT_EQ(render.status, 0);
  EXPECT_THAT(render.messages, StartsWith("warning: " + words));
  EXPECT_EQ(ReadFloatWav(files_.Beside("out.wav")), FramesFromZero(32000));
  const Ended play =
      Orbel({"play", files_.Show(), "--output", "file", "--device", files_.Beside("play.wav")});
  EXPECT_EQ(play.status, 0);
  EXPECT_THAT(play.messages, HasSubstr("warning: " + words));
}

TEST_F(Check, ASongWithoutAudioAndAFileThatIsNotPlayedAreWarnings) {
  files_.AddSong("1", "Waltz", 4);
  files_.WriteMidi(files_.At("songs/2 Polka.mid"), 4);
  files_.Write("data/2 Polka.OBD", "");
  const Ended run = Look();
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("warning: songs/2 Polka.mid: has no audio and is passed over; add "
                                 "\"data/2 Polka.obd\"\n"));
  EXPECT_THAT(
      run.out,
      HasSubstr("warning: data/2 Polka.OBD: is not played, because its name does not end in \".obd\"; "
                "rename it, or take it out\n"));
  EXPECT_THAT(run.out, EndsWith("no errors, 2 warnings\n"));
}

TEST_F(Check, AFileWithTheNumberOfASongThatIsCalledOtherwiseIsAWarning) {
  files_.AddSong("1", "Waltz", 4);
  files_.AddSong("2", "Polka", 4);
  files_.Write("songs/1 Walz.toml", "format = 1\n");
  std::filesystem::rename(files_.At("data/2 Polka.obd"), files_.At("data/2 Galop.obd"));
  const Ended run = Look();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(
      run.out,
      "warning: songs/1 Walz.toml: is taken for song 1 because of its number, though that song is called "
      "otherwise: \"songs/1 Waltz.mid\"; name both alike, or give the file the number of its own song\n"
      "warning: data/2 Galop.obd: is taken for song 2 because of its number, though that song is called "
      "otherwise: \"songs/2 Polka.mid\"; name both alike, or give the file the number of its own song\n"
      "no errors, 2 warnings\n");
}

TEST_F(Check, FilesAmongTheSongsThatNobodyReadsAreWarnings) {
  files_.AddSong("1", "Waltz", 4, "[[caesura]]\nat = \"2\"\n");
  files_.Write("songs/notes", "bring the tuba");
  files_.Write("songs/1 Waltz.pdf", "");
  files_.Write("songs/.hidden", "");
  const Ended run = Look();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            "warning: songs/1 Waltz.pdf: is not read, because its name ends neither in \".mid\" nor in "
            "\".toml\"; rename it, or take it out\n"
            "warning: songs/notes: is not read, because its name ends neither in \".mid\" nor in \".toml\"; "
            "rename it, or take it out\n"
            "no errors, 2 warnings\n");
}

// Told once, when the show is loaded.
TEST_F(Check, AMidiFileOrCuesInCapitalsAreOneWarning) {
  files_.AddSong("1", "Waltz", 4);
  files_.Write("songs/1 Waltz.TOML", "");
  files_.Write("songs/2 Polka.midi", "");
  const Ended run = Look();
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("warning: songs/1 Waltz.TOML: is not read; the name of a song's MIDI file"));
  EXPECT_THAT(run.out, HasSubstr("warning: songs/2 Polka.midi: is not read; the name of a song's MIDI file"));
  EXPECT_THAT(run.out, EndsWith("no errors, 2 warnings\n"));
}

TEST_F(Check, AudioShorterThanTheSongIsAWarning) {
  files_.AddSong("1", "Waltz", 4);
  WriteWav(files_.At("data/1 Waltz.obd"), FramesFromZero(20000), ShowFiles::kRate);
  const Ended run = Look();
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(
      run.out,
      HasSubstr("warning: data/1 Waltz.obd: is shorter than the song: 0:02.500 of 0:04.000, the rest is "
                "silence; give audio_end in the song's cues, or the whole recording\n"));
}

TEST_F(Check, WhatIsOddAboutAudioIsAWarningAndNoLineBesidesTheResults) {
  files_.AddSong("1", "Waltz", 4);
  std::vector<float> samples = FramesFromZero(32000);
  samples[5] = std::numeric_limits<float>::quiet_NaN();
  samples[6] = std::numeric_limits<float>::infinity();
  WriteWav(files_.At("data/1 Waltz.obd"), samples, ShowFiles::kRate);
  const Ended run = Look();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(
      run.out,
      "warning: data/1 Waltz.obd: 2 samples that are not finite are replaced by 0; it plays like that, or "
      "export the recording again\nno errors, 1 warning\n");
  EXPECT_EQ(run.messages, "");
  const auto json = nlohmann::json::parse(Orbel({"check", "--json", files_.Show()}).out);
  EXPECT_EQ(json.size(), 1U);
}

TEST_F(Check, AnotherRateIsAWarningAndOtherChannelsAreAnError) {
  files_.AddSong("1", "Waltz", 2);
  files_.AddSong("2", "Polka", 2);
  files_.AddSong("3", "Galop", 2);
  WriteWav(files_.At("data/2 Polka.obd"), std::vector<float>(2 * 16000, 0.0F), 16000);
  WriteWav(files_.At("data/3 Galop.obd"), std::vector<float>(2 * 2 * 8000, 0.0F), 8000, 2);
  const Ended run = Look();
  EXPECT_EQ(run.status, 5);
  EXPECT_THAT(
      run.out,
      HasSubstr("warning: data/2 Polka.obd: has 16000 frames a second where song 1 has 8000, so it is "
                "resampled when it is loaded; convert it to save that\n"));
  EXPECT_THAT(
      run.out,
      HasSubstr("error: data/3 Galop.obd: has 2 channels where song 1 has 1, so it cannot be played in "
                "this show; convert it\n"));
}

TEST_F(Check, AClickAtASeamIsAWarningWithTheLineOfItsCue) {
  files_.AddSong("1", "Waltz", 4, "[[vamp]]\nfrom = \"2\"\nto = \"3\"\n");
  std::vector<float> steady(32000);
  for (std::size_t frame = 0; frame < steady.size(); ++frame) {
    steady[frame] =
        0.5F *
        static_cast<float>(std::sin(2.0 * 3.141592653589793 * 100.25 * static_cast<double>(frame) / 8000.0));
  }
  WriteWav(files_.At("data/1 Waltz.obd"), steady, ShowFiles::kRate);
  const Ended run = Look();
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(
      run.out,
      HasSubstr("warning: songs/1 Waltz.toml:2: the vamp's jump from 3.1.0 to 2.1.0 may click: a step of "));
}

TEST_F(Check, ASeamThatTheMusicHidesIsNoWarning) {
  files_.AddSong("1", "Waltz", 4, "[[vamp]]\nfrom = \"2\"\nto = \"3\"\n");
  std::vector<float> whole(32000);  // whole periods in a bar: the seam is as smooth as the music
  for (std::size_t frame = 0; frame < whole.size(); ++frame) {
    whole[frame] =
        0.5F *
        static_cast<float>(std::sin(2.0 * 3.141592653589793 * 100.0 * static_cast<double>(frame) / 8000.0));
  }
  WriteWav(files_.At("data/1 Waltz.obd"), whole, ShowFiles::kRate);
  EXPECT_EQ(Look().out, "no errors, no warnings\n");
}

TEST_F(Check, OtherTemposAndKeysAreNoFault) {
  files_.AddSong("1", "Waltz", 4,
                 "[[tempo]]\nat = \"2\"\nscale = 0.5\n[[transpose]]\nat = \"3\"\nsemitones = 1\n");
  EXPECT_EQ(Look().status, 0);
}

TEST_F(Check, AnAttaccaIntoNothingIsAWarning) {
  files_.AddSong("1", "Waltz", 2, "attacca = true\n");
  const Ended run = Look();
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(
      run.out,
      HasSubstr("warning: songs/1 Waltz.toml: attacca: there is no song with audio to run into, so this "
                "one simply ends; take it out, or add the next song\n"));
}

TEST_F(Check, FaultsInCuesAreFoundAllTogether) {
  files_.AddSong("1", "Waltz", 4, "[[vamp]]\nfrom = \"3\"\nto = \"40\"\n");
  files_.AddSong("2", "Polka", 4, "[[cutt]]\nfrom = \"3\"\n");
  const Ended run = Look();
  EXPECT_EQ(run.status, 5);
  EXPECT_THAT(run.out, HasSubstr("error: songs/1 Waltz.toml:4"));
  EXPECT_THAT(run.out, HasSubstr("error: songs/2 Polka.toml:2"));
}

TEST_F(Check, NamesCannotForgeLinesNorMoveTheCursor) {
  files_.AddSong("1", "Waltz", 2);
  files_.Write("data/\x1b[2J\nerror: x.wav", "");
  EXPECT_THAT(Look().out, HasSubstr("warning: data/\\x1b[2J\\x0aerror: x.wav: is not played"));
}

TEST_F(Check, JsonHasOneObjectAFinding) {
  files_.AddSong("1", "Waltz", 2);
  files_.AddSong("2", "Polka", 2);
  WriteWav(files_.At("data/2 Polka.obd"), std::vector<float>(2 * 2 * 8000, 0.0F), 8000, 2);
  files_.Write("data/\xff.wav", "");
  const Ended run = Orbel({"check", "--json", files_.Show()});
  EXPECT_EQ(run.status, 5);
  const auto json = nlohmann::json::parse(run.out);
  ASSERT_EQ(json.size(), 2U);
  EXPECT_EQ(json[0]["severity"], "error");
  EXPECT_EQ(json[0]["file"], "data/2 Polka.obd");
  EXPECT_EQ(json[0]["song"], "2");
  EXPECT_EQ(json[1]["severity"], "warning");
}

TEST_F(Check, JsonTellsTheLineOfACue) {
  files_.AddSong("1", "Waltz", 2, "[[cutt]]\nfrom = \"3\"\n");
  const auto json = nlohmann::json::parse(Orbel({"check", "--json", files_.Show()}).out);
  ASSERT_EQ(json.size(), 1U);
  EXPECT_EQ(json[0]["file"], "songs/1 Waltz.toml");
  EXPECT_EQ(json[0]["line"], 2);
}

TEST(CheckWithoutAShow, IsAFailureAndNotAFinding) {
  const Ended run = Orbel({"check", "no/such/show"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages,
            "orbel: no/such/show: is not a show folder; give the folder that holds songs/ and data/\n");
}

}  // namespace
}  // namespace host_tests
