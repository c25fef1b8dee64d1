#include "tests/reference_suite/midi/standard_midi_file/midi_bytes.h"

#include <cstring>

namespace midi_bytes {

Bytes Number(std::uint32_t value, int byteCount) {
  Bytes bytes;
  for (int shift = 8 * (byteCount - 1); shift >= 0; shift -= 8) {
    bytes.push_back(static_cast<std::uint8_t>(value >> shift & 0xFF));
  }
  return bytes;
}

Bytes Joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

Bytes Repeated(const Bytes& part, std::size_t count) {
  Bytes all;
  all.reserve(part.size() * count);
  for (std::size_t index = 0; index < count; ++index) all.insert(all.end(), part.begin(), part.end());
  return all;
}

Bytes Chunk(const char* type, const Bytes& body) {
  const Bytes typeBytes(type, type + std::strlen(type));
  return Joined({typeBytes, Number(static_cast<std::uint32_t>(body.size()), 4), body});
}

Bytes Header(unsigned format, unsigned tracks, unsigned division) {
  return Chunk("MThd", Joined({Number(format, 2), Number(tracks, 2), Number(division, 2)}));
}

Bytes Track(std::initializer_list<Bytes> events) {
  return Chunk("MTrk", Joined({Joined(events), Bytes{0x00, 0xFF, 0x2F, 0x00}}));
}

Bytes OpenTrack(std::initializer_list<Bytes> events) {
  return Chunk("MTrk", Joined(events));
}

Bytes Event(std::uint8_t delta, std::initializer_list<std::uint8_t> bytes) {
  return Joined({Bytes{delta}, Bytes(bytes)});
}

Bytes Meta(std::uint8_t delta, std::uint8_t type, const Bytes& data) {
  return Joined({Bytes{delta, 0xFF, type, static_cast<std::uint8_t>(data.size())}, data});
}

Bytes Tempo(std::uint8_t delta, std::uint32_t microseconds) {
  return Meta(delta, 0x51, Number(microseconds, 3));
}

Bytes File(std::initializer_list<Bytes> tracks) {
  return Joined({Header(1, static_cast<unsigned>(tracks.size()), 480), Joined(tracks)});
}

tesk_midi::StandardMidiFile Parsed(const Bytes& file) {
  return tesk_midi::ParseSmf(file, "song.mid");
}

tesk_midi::StandardMidiFile ParsedTrack(std::initializer_list<Bytes> events) {
  return Parsed(File({Track(events)}));
}

std::string Refusal(const Bytes& file) {
  try {
    Parsed(file);
  } catch (const tesk_midi::SmfError& error) {
    return error.what();
  }
  return "accepted";
}

std::string RefusalOfTrack(std::initializer_list<Bytes> events) {
  return Refusal(File({Track(events)}));
}

}  // namespace midi_bytes
