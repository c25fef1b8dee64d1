#include "reference_suite/midi/show_folder/read_song_log.h"
#include "reference_suite/midi/toml/parse_toml.h"

namespace tesk_midi {

bool ReadTomlText(const std::string& text, FileProblems* problems, TomlNode* table) {
  if (text.size() > kMaxTomlBytes) {
    problems->Error("is larger than " + std::to_string(kMaxTomlBytes) +
                    " bytes; see that it is the right file.");
    return false;
  }
  try {
    *table = ParseToml(text);
  } catch (const TomlSyntaxError& error) {
    problems->Error(error.GetPlace(), "is not TOML: " + ShownText(error.what()) + ".");
    return false;
  }
  return true;
}

}  // namespace tesk_midi
