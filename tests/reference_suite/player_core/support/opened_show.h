#pragma once

#include <functional>
#include <string>

#include "suite/audio/create.h"
#include "suite/midi/load_show.h"

namespace test_support {

// What the fakes of tesk_midi::LoadShow and tesk_audio::ProbeAudioFile answer in this program.
struct OpenedShow {
  std::function<tesk_midi::LoadedShow(const std::string& showPath)> load;
  std::function<tesk_audio::AudioFileInfo(const std::string& path)> probe;
};
OpenedShow& TheOpenedShow();

}  // namespace test_support
