#include "player_core/player_wrapper/audio_player_wrapper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <vector>

#include "exc/assertion/ex_assertion_error.h"
#include "suite/audio/errors.h"
#include "suite/player_core/errors.h"
#include "suite/utility/listdir.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/fakes/fake_player_wrapper.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/journaling_gui_update.h"
#include "tests/fakes/scripted_show_control.h"
#include "tests/support/cranked_output.h"
#include "tests/support/no_threads.h"
#include "tests/support/staircase_content.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/throws_with_text.h"

namespace {

using test_support::ThrowsWithText;
using Pairs = std::vector<std::pair<std::string, std::string>>;

class AudioPlayerWrapperTest : public testing::Test {
 protected:
  AudioPlayerWrapperTest() {
    fakes::decoder::Reset();
    fakes::show_control::Reset();
    fakes::player_wrapper::Reset();
    fakes::player_wrapper::SetSongs({"1", "2", "10"});
    test_support::cranked::Reset();
    show_.MakeFolder("data");
    fakes::TakeJournal();
  }
  ~AudioPlayerWrapperTest() override {
    wrapper_.reset();
    EXPECT_EQ(test_support::StaircaseContent::alive, 0) << "audio that nobody has freed";
  }

  void Put(const std::vector<std::string>& names) {
    for (const std::string& name : names) show_.WriteFile("data/" + name);
  }
  void Open() { wrapper_ = std::make_unique<AudioPlayerWrapper>(show_.Path(), "none"); }
  auto Opening() {
    return [this] { Open(); };
  }
  bool PlayerWasMade() {
    const auto journal = fakes::TakeJournal();
    return std::count(journal.begin(), journal.end(), "gui.StartUpdateGenerator") != 0;
  }

  test_support::TemporaryFolder show_;
  std::unique_ptr<AudioPlayerWrapper> wrapper_;
};

TEST_F(AudioPlayerWrapperTest, TheLowestSongIsLoadedFirst) {
  Put({"2 Intro.obd", "10 Finale.obd", "1 Opening Night.obd"});
  Open();
  EXPECT_EQ(wrapper_->GetPlayer()->GetCurrentSongNumber(), "1");
  EXPECT_EQ(wrapper_->GetPlayer()->GetCurrentSongContent()->GetSampleCount(), 1000u);
  EXPECT_EQ(wrapper_->GetPlayer()->GetPlayerState(), PlayerState::STOP);
}

TEST_F(AudioPlayerWrapperTest, SongNamesComeFromTheFilesInOrderOfNumber) {
  Put({"2 Intro.obd", "10 Finale.obd", "1 Opening Night.obd"});
  Open();
  const auto names = wrapper_->GetSongNames();
  EXPECT_EQ(Pairs(names.begin(), names.end()),
            (Pairs{{"1", "Opening Night"}, {"2", "Intro"}, {"10", "Finale"}}));
}

TEST_F(AudioPlayerWrapperTest, TheLowestNumberIsByValueAndNotByText) {
  Put({"2 Intro.obd", "10 Finale.obd"});
  Open();
  EXPECT_EQ(wrapper_->GetPlayer()->GetCurrentSongNumber(), "2");
}

TEST_F(AudioPlayerWrapperTest, TheBaseGetsBothStringsAndTheVersionBeforeItsSetUp) {
  Put({"1 Opening Night.obd"});
  Open();
  const fakes::player_wrapper::Seen seen = fakes::player_wrapper::GetSeen();
  EXPECT_EQ(seen.showPath, show_.Path());
  EXPECT_EQ(seen.leaveOut, "none");
  EXPECT_EQ(seen.versionTargetAtSetUp, 2);
}

TEST_F(AudioPlayerWrapperTest, ThePlayerPlaysFromTheShowsDataFolder) {
  Put({"1 Opening Night.obd"});
  Open();
  EXPECT_EQ(fakes::decoder::CountCalls(show_.Path("data/1 Opening Night.obd")), 1);
}

TEST_F(AudioPlayerWrapperTest, ThePlayerIsTheSameThroughTheBase) {
  Put({"1 Opening Night.obd"});
  Open();
  PlayerWrapper& base = *wrapper_;
  EXPECT_EQ(base.GetPlayer(), wrapper_->GetPlayer());
}

TEST_F(AudioPlayerWrapperTest, FilesWithAnotherExtensionAreIgnored) {
  Put({"1 Opening Night.obd", "3 Song.OBD", "3 Song.ogg"});
  Open();
  EXPECT_EQ(wrapper_->GetSongNames().size(), 1u);
}

TEST_F(AudioPlayerWrapperTest, AudioWithoutMidiDataIsAnErrorBeforeAnyPlayerIsMade) {
  Put({"1 Opening Night.obd", "3 Song.obd"});
  EXPECT_TRUE(ThrowsWithText<MP3NoMatchError>(Opening(), "No midi data found for song number 3"));
  EXPECT_FALSE(PlayerWasMade());
}

TEST_F(AudioPlayerWrapperTest, OfTwoWithoutMidiDataTheLowerNumberIsNamed) {
  Put({"30 Song.obd", "4 Song.obd"});
  EXPECT_TRUE(ThrowsWithText<MP3NoMatchError>(Opening(), "No midi data found for song number 4"));
}

TEST_F(AudioPlayerWrapperTest, ANameWithoutABlankIsLookedUpAsItStands) {
  Put({"7.obd"});
  fakes::player_wrapper::SetSongs({"7"});
  EXPECT_TRUE(ThrowsWithText<MP3NoMatchError>(Opening(), "No midi data found for song number 7.obd"));
  fakes::player_wrapper::SetSongs({"7.obd"});
  Open();
  EXPECT_EQ(wrapper_->GetPlayer()->GetCurrentSongNumber(), "7.obd");
  EXPECT_EQ(wrapper_->GetSongNames()["7.obd"], "");
}

TEST_F(AudioPlayerWrapperTest, AnEmptyDataFolderIsAnErrorThatSaysWhatToDo) {
  EXPECT_TRUE(ThrowsWithText<PlayerWrapperError>(
      Opening(), "No playable audio found in \"" + show_.Path("data") +
                     "\": put each song's audio there, named \"NUMBER NAME.obd\"."));
  EXPECT_FALSE(PlayerWasMade());
}

TEST_F(AudioPlayerWrapperTest, AMissingDataFolderIsTheListingsError) {
  std::filesystem::remove(show_.Path("data"));
  EXPECT_THROW(Open(), exc::ListdirError);
}

TEST_F(AudioPlayerWrapperTest, WithoutShowDataTheAssertionPasses) {
  Put({"1 Opening Night.obd"});
  fakes::player_wrapper::WithholdShowData();
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(Opening(),
                                                    "Assertion failed: this->showData_ != nullptr, function "
                                                    "GetShowData, file player_core/player_wrapper, line "
                                                    "289."));
}

TEST_F(AudioPlayerWrapperTest, AFailureOfTheSetUpPasses) {
  fakes::player_wrapper::FailSetUp("show.toml: no such file");
  EXPECT_TRUE(ThrowsWithText<std::runtime_error>(Opening(), "show.toml: no such file"));
  EXPECT_EQ(fakes::TakeJournal(), (std::vector<std::string>{"wrapper.SetUp", "wrapper.Delete"}));
}

// It is the player's to tell, as for every load that fails.
TEST_F(AudioPlayerWrapperTest, AFirstSongThatCannotBeDecodedOpensAllTheSame) {
  Put({"1 Opening Night.obd"});
  fakes::decoder::FailDecode(show_.Path("data/1 Opening Night.obd"), fakes::decoder::ErrorKind::OggVorbis,
                             "bad page");
  Open();
  EXPECT_TRUE(wrapper_->GetPlayer()->GetFileLoaderErrorOccurred());
}

// ---- failures on the way: what was built is destroyed ------------------------------------------------

TEST_F(AudioPlayerWrapperTest, AFailureOfThePlayersConstructionPasses) {
  Put({"1 Opening Night.obd"});
  const test_support::NoThreads noThreads;
  EXPECT_TRUE(ThrowsWithText<std::runtime_error>(Opening(),
                                                 "Creating audio content deleter thread.: 11 EAGAIN: The "
                                                 "system lacked the necessary resources to create "
                                                 "another thread."));
  EXPECT_EQ(fakes::TakeJournal().back(), "wrapper.Delete");
}

TEST_F(AudioPlayerWrapperTest, AFailureOfTheFirstLoadPassesAndThePlayerIsDestroyedBeforeTheBase) {
  Put({"1 Opening Night.obd"});
  test_support::cranked::FailCreate("no such device");
  EXPECT_TRUE(ThrowsWithText<tesk_audio::TESKAudioError>(Opening(), "no such device"));
  const auto journal = fakes::TakeJournal();
  EXPECT_EQ(std::count(journal.begin(), journal.end(), "gui.StartUpdateGenerator"), 1);
  EXPECT_EQ(std::count(journal.begin(), journal.end(), "gui.Delete"), 1);
  EXPECT_EQ(journal.back(), "wrapper.Delete");
  EXPECT_EQ(test_support::StaircaseContent::alive, 0);
}

// ---- songs that are left out -------------------------------------------------------------------------

TEST_F(AudioPlayerWrapperTest, AFirstSongThatIsLeftOutReachesNoLoader) {
  Put({"1 Opening Night.obd", "2 Intro.obd", "10 Finale.obd"});
  fakes::player_wrapper::LeaveOut("1", "The file ends early.");
  Open();
  EXPECT_EQ(wrapper_->GetPlayer()->GetCurrentSongNumber(), "2");
  EXPECT_THROW(wrapper_->GetPlayer()->LoadSong("1"), AudioPlayer::NoAudioForSong);
  EXPECT_EQ(fakes::decoder::CountCalls(show_.Path("data/1 Opening Night.obd")), 0);
  EXPECT_EQ(wrapper_->GetSongNames().size(), 3u) << "it has a name all the same";
}

TEST_F(AudioPlayerWrapperTest, WhenEverySongIsLeftOutTheErrorSaysWhy) {
  Put({"1 Opening Night.obd", "2 Intro.obd"});
  fakes::player_wrapper::LeaveOut("1", "The file ends early.");
  fakes::player_wrapper::LeaveOut("2", "This is no audio.");
  EXPECT_TRUE(ThrowsWithText<PlayerWrapperError>(
      Opening(), "None of the audio in \"" + show_.Path("data") +
                     "\" can be played.\nThe file ends early.\nThis is no audio."));
  EXPECT_FALSE(PlayerWasMade());
}

// ---- the end -----------------------------------------------------------------------------------------

TEST_F(AudioPlayerWrapperTest, ThePlayerIsDestroyedBeforeTheBase) {
  Put({"1 Opening Night.obd"});
  Open();
  fakes::TakeJournal();
  wrapper_.reset();
  const auto journal = fakes::TakeJournal();
  ASSERT_FALSE(journal.empty());
  EXPECT_EQ(std::count(journal.begin(), journal.end(), "gui.Delete"), 1);
  EXPECT_EQ(journal.back(), "wrapper.Delete");
}

TEST_F(AudioPlayerWrapperTest, WhileThePlayerGoesItIsNotHandedOutAnyMore) {
  Put({"1 Opening Night.obd"});
  Open();
  AudioPlayerWrapper* const wrapper = wrapper_.get();
  AudioPlayer* handedOut = wrapper->GetPlayer();
  fakes::gui_update::OnCall([&](const std::string& call) {
    if (call == "Pause") handedOut = wrapper->GetPlayer();
  });
  wrapper_.reset();
  fakes::gui_update::OnCall(nullptr);
  EXPECT_EQ(handedOut, nullptr);
}

}  // namespace
