#include "suite/player_core/player_wrapper.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "exc/assertion/ex_assertion_error.h"
#include "suite/audio/errors.h"
#include "suite/player_core/errors.h"
#include "suite/utility/listdir.h"
#include "tests/reference_suite/player_core/support/opened_show.h"
#include "tests/reference_suite/player_core/support/test_show.h"
#include "tests/support/throws_with_text.h"

namespace {

using test_support::TestSong;
using test_support::ThrowsWithText;

class TestWrapper : public PlayerWrapper {
 public:
  using PlayerWrapper::PlayerWrapper;
  std::map<std::string, std::string, exc::NumericStringCompare> GetSongNames() override { return {}; }
  Player* GetPlayer() override { return nullptr; }
  using PlayerWrapper::changeLog_;
  using PlayerWrapper::leaveOut_;
};

// A show folder with empty files in "data"; what they hold is what the test says.
class Wrapper : public testing::Test {
 protected:
  void SetUp() override {
    const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
    folder_ = std::filesystem::temp_directory_path() / ("orbel_wrapper_" + name);
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_ / "data");
    test_support::TheOpenedShow().load = [this](const std::string& path) {
      EXPECT_EQ(path, folder_.string());
      tesk_midi::LoadedShow show;
      show.showData = std::make_unique<tesk_midi::ShowData>();
      std::vector<std::string> order;
      for (const char* number : {"1", "2", "3"}) {
        show.showData->AddSong(TestSong(number).MakeData());
        order.push_back(number);
      }
      show.showData->SetRunningOrder(order);
      show.changeLog = std::make_unique<CL::ChangeLog>();
      tesk_midi::Problem warning;
      warning.message = "loaded with a warning";
      warning.isWarning = true;
      show.warnings.push_back(warning);
      return show;
    };
    test_support::TheOpenedShow().probe = [this](const std::string& path) {
      probed_.push_back(path);
      tesk_audio::AudioFileInfo info;
      info.frames = 1000;
      return info;
    };
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  void AddFile(const std::string& name) { std::ofstream(folder_ / "data" / name).put('x'); }

  // The problems that SetUp found after those of loading, one a line.
  std::string Survey(const std::string& leaveOut = "") {
    wrapper_ = std::make_unique<TestWrapper>(folder_.string(), leaveOut);
    wrapper_->SetUp();
    std::string text;
    for (const tesk_midi::Problem& problem : wrapper_->GetProblems()) {
      if (problem.message == "loaded with a warning") continue;
      text += (problem.isWarning ? "warning " : "error ") + problem.file + " song " + problem.songNumber +
              ": " + problem.message + "\n";
    }
    return text;
  }
  tesk_midi::ShowData& Show() { return wrapper_->GetShowData(); }

  std::filesystem::path folder_;
  std::vector<std::string> probed_;
  std::unique_ptr<TestWrapper> wrapper_;
};

TEST_F(Wrapper, WithoutShowDataAsksForItInVain) {
  TestWrapper wrapper(folder_.string(), "");
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [&] { wrapper.GetShowData(); },
      "Assertion failed: this->showData_ != nullptr, function GetShowData, file player_core/player_wrapper, "
      "line 289."));
}

TEST_F(Wrapper, KeepsItsTwoStringsAndItsTarget) {
  TestWrapper wrapper("some/show", "2,3");
  EXPECT_EQ(wrapper.GetShowPath(), "some/show");
  EXPECT_EQ(wrapper.leaveOut_, "2,3");
  EXPECT_EQ(wrapper.GetVersionTarget(), 0);
  wrapper.SetVersionTarget(2);
  EXPECT_EQ(wrapper.GetVersionTarget(), 2);
}

TEST_F(Wrapper, SetUpLoadsDataLogAndWarnings) {
  Survey();
  EXPECT_TRUE(Show().HasSong("3"));
  EXPECT_NE(wrapper_->changeLog_, nullptr);
  ASSERT_FALSE(wrapper_->GetProblems().empty());
  EXPECT_EQ(wrapper_->GetProblems()[0].message, "loaded with a warning");
}

TEST_F(Wrapper, EveryAudioFileIsExamined) {
  AddFile("1 One.obd");
  AddFile("3 Three and more.obd");
  AddFile("2 Two.ogg");
  EXPECT_EQ(Survey(), "");
  EXPECT_EQ(probed_, (std::vector<std::string>{(folder_ / "data/1 One.obd").string(),
                                               (folder_ / "data/3 Three and more.obd").string()}));
  EXPECT_TRUE(Show().HasAudio("1"));
  EXPECT_FALSE(Show().HasAudio("2"));
  EXPECT_FALSE(Show().IsLeftOut("2"));
}

TEST_F(Wrapper, ASongWhoseAudioCannotBeDecodedIsLeftOutAndNamed) {
  AddFile("1 One.obd");
  AddFile("2 Two.obd");
  test_support::TheOpenedShow().probe = [](const std::string& path) {
    if (path.find("2 Two") != std::string::npos)
      throw tesk_audio::OggVorbisDecodeError("The first page is broken.");
    return tesk_audio::AudioFileInfo{1000, 44100.0, 2, "Ogg Vorbis"};
  };
  EXPECT_EQ(Survey(),
            "error data/2 Two.obd song 2: The first page is broken. Song 2 is left out of the show.\n");
  EXPECT_TRUE(Show().IsLeftOut("2"));
  EXPECT_FALSE(Show().IsLeftOut("1"));
}

TEST_F(Wrapper, AudioOfNoFramesIsAProblem) {
  AddFile("1 One.obd");
  test_support::TheOpenedShow().probe = [](const std::string&) { return tesk_audio::AudioFileInfo{}; };
  EXPECT_EQ(Survey(),
            "error data/1 One.obd song 1: The file holds no audio. Song 1 is left out of the show.\n");
  EXPECT_TRUE(Show().IsLeftOut("1"));
}

TEST_F(Wrapper, AudioOfMoreThan4294967295FramesIsAProblem) {
  AddFile("1 One.obd");
  AddFile("2 Two.obd");
  test_support::TheOpenedShow().probe = [](const std::string& path) {
    tesk_audio::AudioFileInfo info;
    info.frames = path.find("1 One") != std::string::npos ? 4'294'967'295 : 4'294'967'296;
    return info;
  };
  EXPECT_EQ(
      Survey(),
      "error data/2 Two.obd song 2: The audio has 4294967296 frames; more than 4294967295 cannot be played. "
      "Split the song. Song 2 is left out of the show.\n");
  EXPECT_FALSE(Show().IsLeftOut("1"));
  EXPECT_TRUE(Show().IsLeftOut("2"));
}

TEST_F(Wrapper, AudioWhoseLengthOnlyDecodingCanTellIsTaken) {
  AddFile("1 One.obd");
  test_support::TheOpenedShow().probe = [](const std::string&) {
    tesk_audio::AudioFileInfo info;
    info.frames = -1;
    return info;
  };
  EXPECT_EQ(Survey(), "");
  EXPECT_FALSE(Show().IsLeftOut("1"));
}

TEST_F(Wrapper, OfTwoFilesWithOneNumberTheLaterOneIsPlayed) {
  AddFile("1 Apple.obd");
  AddFile("1 Berry.obd");
  EXPECT_EQ(Survey(),
            "warning data/1 Apple.obd song 1: has the same number as \"data/1 Berry.obd\", which is played "
            "instead; remove one of the two\n");
  EXPECT_EQ(probed_, (std::vector<std::string>{(folder_ / "data/1 Berry.obd").string()}));
}

TEST_F(Wrapper, AFileWhoseSongTheShowDoesNotHaveIsNotExamined) {
  AddFile("7.obd");
  AddFile("9 Nine.obd");
  EXPECT_EQ(Survey(), "");
  EXPECT_TRUE(probed_.empty());
}

TEST_F(Wrapper, SongsAreLeftOutOnRequest) {
  EXPECT_EQ(Survey("1,3"), "");
  EXPECT_TRUE(Show().IsLeftOut("1"));
  EXPECT_FALSE(Show().IsLeftOut("2"));
  EXPECT_TRUE(Show().IsLeftOut("3"));
}

TEST_F(Wrapper, LeavingOutASongThatIsNotThereIsAWarning) {
  EXPECT_EQ(Survey("8"), "warning  song 8: Song 8 is to be left out, but the show has no such song.\n");
}

TEST_F(Wrapper, AFolderThatCannotBeListedIsToldAsItIs) {
  std::filesystem::remove_all(folder_ / "data");
  TestWrapper wrapper(folder_.string(), "");
  EXPECT_THROW(wrapper.SetUp(), exc::ListdirError);
}

TEST_F(Wrapper, WhatLoadingThrowsPassesThrough) {
  test_support::TheOpenedShow().load = [](const std::string&) -> tesk_midi::LoadedShow {
    throw PlayerWrapperError("no show");
  };
  TestWrapper wrapper(folder_.string(), "");
  EXPECT_TRUE(ThrowsWithText<PlayerWrapperError>([&] { wrapper.SetUp(); }, "no show"));
}

TEST_F(Wrapper, HasNoScoresAndNobodyBeatsTime) {
  TestWrapper wrapper(folder_.string(), "");
  EXPECT_EQ(wrapper.GetScoreTar(), "");
  EXPECT_FALSE(wrapper.GetHasConductBeat());
  wrapper.SetMidiSource(3);
  wrapper.LoadChangeLogEditor();
}

TEST_F(Wrapper, KnowsTheWordsForWhatAPerformerCanAskFor) {
  TestWrapper wrapper(folder_.string(), "");
  EXPECT_EQ(wrapper.GetCommandNames(),
            (std::vector<std::string>{"go", "again", "play", "pause", "stop", "next", "previous", "seek",
                                      "left", "right", "tempo", "transpose"}));
}

}  // namespace
