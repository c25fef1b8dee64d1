#pragma once

#include <string>
#include <string_view>

namespace tesk_midi {

// `text` as messages and displays may show it: control characters and bytes that are not UTF-8 stand as \xNN,
// so that a name can neither break a line nor command a terminal. What is shown already stays as it is.
std::string ShownText(std::string_view text);

// The same in double quotes.
std::string Quoted(std::string_view text);

// Text of a MIDI file, which says nothing of its encoding: UTF-8 where it is that, otherwise Latin-1.
std::string TextFromMidi(std::string_view bytes);

}  // namespace tesk_midi
