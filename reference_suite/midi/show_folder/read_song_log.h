#pragma once

#include <string>

#include "reference_suite/midi/show_folder/file_problems.h"
#include "reference_suite/midi/show_folder/written_song_log.h"

namespace tesk_midi {

// Reads the text of a song's TOML file as far as that goes without the song: syntax, keys, kinds and ranges
// of values. What is wrong is added to `problems` and is missing in the result.
WrittenSongLog ReadSongLog(const std::string& text, FileProblems* problems);

// A text that is larger than any hand writes; what is read of it is refused.
inline constexpr std::size_t kMaxTomlBytes = std::size_t{1024} * 1024;

// The table that `text` is; false, and an error, when it is too large or not TOML.
bool ReadTomlText(const std::string& text, FileProblems* problems, TomlNode* table);

}  // namespace tesk_midi
