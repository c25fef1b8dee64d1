#include "reference_suite/audio/output/go_on_attacca.h"

#include <exception>
#include <stdexcept>

#include "suite/core/tesk_log_exception.h"

namespace tesk_audio {

bool GoOnAttacca(AudioPlayerOutputInterface& player) {
  try {
    if (!player.CurrentSongIsAttacca()) return false;
    player.LoadNextSongAttacca();
    return player.GetAttaccaHasOccurred();
  } catch (const std::out_of_range&) {
    // The end of the show: there is no song to go on with.
    return false;
  } catch (const std::exception& error) {
    TeskLogException(error.what(), "reference_suite/audio/output", __LINE__);
    return false;
  }
}

}  // namespace tesk_audio
