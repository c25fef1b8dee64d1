#include <stdexcept>

#include "reference_suite/player_core/bar_grid.h"
#include "suite/midi/song_data.h"
#include "suite/player_core/gui_update.h"
#include "suite/player_core/player.h"
#include "suite/player_core/show_control.h"

namespace {

// Null when no song is loaded.
const tesk_midi::SongData* GetSong(ShowControl& showControl) {
  try {
    return &showControl.GetCurrentSongData();
  } catch (const std::logic_error&) {
    return nullptr;
  }
}

}  // namespace

// From the shown position, as the performer sees it. The last bar has no next one: going on to the end of the
// song from there would end it.
void Player::SeekToNextMeasure() {
  const tesk_midi::SongData* const song = GetSong(GetShowControl());
  if (song == nullptr) return;
  const unsigned line = song->GetTimeline().GetBarLineAtOrAfter(GetGuiUpdate().GetTickIndex() + 1);
  if (line < GetShowControl().GetEndTickIndex()) Seek(line);
}

void Player::SeekToPreviousMeasure() {
  const tesk_midi::SongData* const song = GetSong(GetShowControl());
  if (song == nullptr) return;
  const unsigned shown = GetGuiUpdate().GetTickIndex();
  unsigned line = song->GetTimeline().GetBarStart(shown);
  const bool isCloseBehind = shown - line < player_core::GetTicksPerBeat(*song, line);
  if (isCloseBehind && line > 0) line = song->GetTimeline().GetBarStart(line - 1);
  Seek(line);
}
