#pragma once

#include <string>
#include <string_view>

namespace orbel::host {

// Text from outside (names, paths, messages) as it may be shown on a terminal: control characters and bytes
// that are not UTF-8 become \xHH, so that no name can move the cursor or forge a line. Threads: ANY.
std::string Shown(std::string_view text);
// The same of the first 60 characters, and "..." for the rest, if there is any.
std::string ShownInShort(std::string_view text);

// What the audio library says of a file, without the name of the file, which a problem has anyway.
std::string WithoutPath(const std::string& text, const std::string& file);
std::string WithoutFullStop(std::string text);

// Seconds as "3:07.250".
std::string MinutesAndSeconds(double seconds);

// "1 channel", "2 channels".
std::string Channels(unsigned count);

// A number with as many digits as it takes and no more, always with a point: "1", "0.95", "12.345678".
// Independent of the locale.
std::string ShortNumber(double value);

}  // namespace orbel::host
