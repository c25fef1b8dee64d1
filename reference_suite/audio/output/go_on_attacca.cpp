#include "reference_suite/audio/output/go_on_attacca.h"

#include <exception>
#include <stdexcept>

#include "suite/core/tesk_log_exception.h"

namespace tesk_audio {

bool GoOnAttacca(AudioPlayerOutputInterface& player) {
  if (!player.CurrentSongIsAttacca()) return false;
  try {
    player.LoadNextSongAttacca();
  } catch (const std::out_of_range&) {
    // The end of the show: there is no song to go on with.
    return false;
  } catch (const std::exception& error) {
    TeskLogException(error.what(), "reference_suite/audio/output", __LINE__);
    return false;
  }
  return player.GetAttaccaHasOccurred();
}

}  // namespace tesk_audio
