// The order of a class's virtual operations is a binary contract with hosts that were built against it.
#include "tests/support/slot_index.h"

#include <gtest/gtest.h>

#include "player_core/player_wrapper/audio_player_wrapper.h"

namespace {

using test_support::SlotIndex;

TEST(WrapperSlotOrder, IsThatOfTheBase) {
  // The destructor pair comes first.
  EXPECT_EQ(SlotIndex(&AudioPlayerWrapper::GetScoreTar), 2u);
  EXPECT_EQ(SlotIndex(&AudioPlayerWrapper::GetSongNames), 3u);
  EXPECT_EQ(SlotIndex(&AudioPlayerWrapper::GetCommandNames), 4u);
  EXPECT_EQ(SlotIndex(&AudioPlayerWrapper::SetMidiSource), 5u);
  EXPECT_EQ(SlotIndex(&AudioPlayerWrapper::GetHasConductBeat), 6u);
  EXPECT_EQ(SlotIndex(&AudioPlayerWrapper::LoadChangeLogEditor), 7u);
  EXPECT_EQ(SlotIndex(&AudioPlayerWrapper::LoadShowData), 8u);
  EXPECT_EQ(SlotIndex(&AudioPlayerWrapper::GetPlayer), 9u);
  EXPECT_EQ(SlotIndex(&PlayerWrapper::GetPlayer), 9u);
}

}  // namespace
