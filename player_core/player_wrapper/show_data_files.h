#pragma once

#include <map>
#include <string>

#include "suite/utility/numeric_string_compare.h"

// The recorded songs of a show, as the names of the files in its "data" folder say: number, blank, name,
// ".obd".
struct ShowDataFiles {
  using ByNumber = std::map<std::string, std::string, exc::NumericStringCompare>;

  ByNumber songNames;
  ByNumber fileNames;  // with extension, without folder
};

// The folder of a show's recorded songs.
std::string GetDataFolder(const std::string& showPath);

// Lists a show's data folder. Files with another extension are passed over; of two files with one number the
// later in the listing counts. Throws exc::ListdirError. Threads: HOST.
ShowDataFiles ListShowDataFiles(const std::string& showPath);
