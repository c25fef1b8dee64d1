#include "tests/reference_suite/player_core/support/opened_show.h"

namespace test_support {

OpenedShow& TheOpenedShow() {
  static OpenedShow show;
  return show;
}

}  // namespace test_support

namespace tesk_midi {

LoadedShow LoadShow(const std::string& showPath) {
  return test_support::TheOpenedShow().load(showPath);
}

}  // namespace tesk_midi

namespace tesk_audio {

AudioFileInfo ProbeAudioFile(const std::string& path) {
  return test_support::TheOpenedShow().probe(path);
}

}  // namespace tesk_audio
