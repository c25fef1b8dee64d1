#pragma once

#include <string>

namespace tesk_audio {

// A path as messages show it: control characters and bytes that are not UTF-8 appear as \xNN, so that a
// file's name can neither break a line nor command a terminal.
std::string ShownPath(const std::string& path);

}  // namespace tesk_audio
