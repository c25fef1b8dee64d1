#include <exception>
#include <iostream>

#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "reference_suite/audio/output/output_settings.h"
#include "suite/player_core/player.h"

// The smallest host there can be: opens the show that it is given and plays its first song.
int main(int argc, char** argv) {
  if (argc != 2) return 2;
  tesk_audio::ConfigureOutput({});
  try {
    AudioPlayerWrapper show(argv[1], "");
    show.GetPlayer()->Play();
    show.GetPlayer()->StopAndReset();
  } catch (const std::exception& error) {
    std::cout << "cannot open the show: " << error.what() << '\n';
  }
  return 0;
}
