#include "reference_suite/audio/device/alsa_cards.h"

#include <filesystem>
#include <system_error>

namespace tesk_audio {

bool AlsaHasCards(const std::string& folder) {
  std::error_code error;
  std::filesystem::directory_iterator each(folder, error);
  for (; !error && each != std::filesystem::directory_iterator(); each.increment(error)) {
    if (each->path().filename().string().starts_with("controlC")) return true;
  }
  return false;
}

}  // namespace tesk_audio
