#include "player_core/player_wrapper/show_data_files.h"

#include <vector>

#include "exc/text/join_string.h"
#include "exc/text/split_string.h"
#include "suite/utility/listdir.h"
#include "suite/utility/path.h"

std::string GetDataFolder(const std::string& showPath) {
  return exc::path::Join(showPath, "data");
}

ShowDataFiles ListShowDataFiles(const std::string& showPath) {
  ShowDataFiles files;
  for (const std::string& entry : exc::listdir(GetDataFolder(showPath))) {
    if (exc::path::extension(entry) != ".obd") continue;
    // The name may hold blanks of its own: only the first one separates.
    const std::vector<std::string> words = exc::SplitString<char>(entry, ' ', -1);
    const std::string nameWithExtension = exc::JoinString(words.begin() + 1, words.end(), " ");
    const std::string& number = words.at(0);
    files.songNames[number] = exc::path::basename_no_ext(nameWithExtension);
    files.fileNames[number] = entry;
  }
  return files;
}
