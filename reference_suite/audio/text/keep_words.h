#pragma once

#include <exception>
#include <string>

namespace tesk_audio {

// Keeps what an error says, for somebody who asks for it later. Of an error for want of memory, and where
// there is none for the words, that is "no memory left". Threads: ANY; allocates, and throws nothing.
void KeepWords(std::string* words, const char* text) noexcept;
void KeepWords(std::string* words, const std::exception& error) noexcept;

}  // namespace tesk_audio
