#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "reference_suite/midi/standard_midi_file/smf_reader.h"

// MIDI files written byte by byte, so that a test can put a fault at a place of its own.
namespace midi_bytes {

using Bytes = std::vector<std::uint8_t>;

Bytes Number(std::uint32_t value, int byteCount);
Bytes Joined(std::initializer_list<Bytes> parts);
Bytes Repeated(const Bytes& part, std::size_t count);

Bytes Chunk(const char* type, const Bytes& body);
Bytes Header(unsigned format, unsigned tracks, unsigned division);

// A track chunk of the events given, closed by an End Of Track at once after the last.
Bytes Track(std::initializer_list<Bytes> events);
Bytes OpenTrack(std::initializer_list<Bytes> events);  // the same without an End Of Track

// One event with its delta time; `delta` below 128.
Bytes Event(std::uint8_t delta, std::initializer_list<std::uint8_t> bytes);
Bytes Meta(std::uint8_t delta, std::uint8_t type, const Bytes& data);
Bytes Tempo(std::uint8_t delta, std::uint32_t microseconds);

// A file of type 1, division 480, of the given track chunks, and what the reader makes of it.
Bytes File(std::initializer_list<Bytes> tracks);
tesk_midi::StandardMidiFile Parsed(const Bytes& file);
tesk_midi::StandardMidiFile ParsedTrack(std::initializer_list<Bytes> events);

// The text with which the file is refused; "accepted" when it is not.
std::string Refusal(const Bytes& file);
std::string RefusalOfTrack(std::initializer_list<Bytes> events);  // the track's bytes begin at byte 22

}  // namespace midi_bytes
