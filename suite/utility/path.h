#pragma once

#include <string>

// Text operations on file paths; the file system is not asked. Paths are bytes separated by '/'.
namespace exc::path {

// The parts with exactly one '/' where they meet, those that they bring along counted in. Empty parts are
// left out.
std::string Join(const std::string& first, const std::string& second);
std::string Join(const std::string& first, const std::string& second, const std::string& third);

// The last '.' of the last component and what follows it: ".obd" for "data/2 Intro.obd", "." for "a.", empty
// when there is none. Leading dots begin a hidden name, not an extension.
std::string extension(const std::string& path);

// The last component without its extension: "2 Intro" for "data/2 Intro.obd".
std::string basename_no_ext(const std::string& path);

}  // namespace exc::path
