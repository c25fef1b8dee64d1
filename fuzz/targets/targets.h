#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

// Each target takes any bytes whatever, and ends the process when a promise is broken. Threads: one at a
// time.
namespace fuzz {

using Bytes = std::span<const std::uint8_t>;

void Smf(Bytes input);        // a Standard MIDI File, and the timeline made of it
void Cues(Bytes input);       // a song's TOML file against a song; the same bytes as a show.toml
void Positions(Bytes input);  // a song, and a position in it
void Audio(Bytes input);      // an audio file of any format
void Script(Bytes input);     // a script of rehearsed commands
void Planner(Bytes input);    // a show and a performer, both drawn from the bytes

// Says what is wrong and ends the process.
[[noreturn]] void Fail(const std::string& promise);
inline void Require(bool kept, const char* promise) {
  if (!kept) Fail(promise);
}

inline std::string Text(Bytes input) {
  return {input.begin(), input.end()};
}

}  // namespace fuzz
