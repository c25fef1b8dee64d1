#include "reference_suite/midi/standard_midi_file/smf_writer.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "reference_suite/midi/standard_midi_file/smf_limits.h"

namespace tesk_midi {

namespace {

using ByteString = std::vector<std::uint8_t>;

void Require(bool holds, const char* text) {
  if (!holds) throw std::invalid_argument(text);
}

std::uint8_t Byte(std::uint32_t value) {
  return static_cast<std::uint8_t>(value & 0xFFu);
}

void AppendNumber(ByteString& out, std::uint32_t value, int byteCount) {
  for (int shift = 8 * (byteCount - 1); shift >= 0; shift -= 8) out.push_back(Byte(value >> shift));
}

void AppendQuantity(ByteString& out, std::uint32_t value) {
  Require(value <= kMaxSmfQuantity, "SmfWriter: more than 268,435,455 ticks or bytes between two events");
  for (int shift = 21; shift > 0; shift -= 7) {
    if (value >> shift != 0) out.push_back(Byte(((value >> shift) & 0x7Fu) | 0x80u));
  }
  out.push_back(Byte(value & 0x7Fu));
}

void AppendChunk(ByteString& out, const char (&type)[5], const ByteString& body) {
  out.insert(out.end(), type, type + 4);
  AppendNumber(out, static_cast<std::uint32_t>(body.size()), 4);
  out.insert(out.end(), body.begin(), body.end());
}

unsigned PowerOfDenominator(unsigned denominator) {
  for (unsigned power = 0; power <= 6; ++power) {
    if (denominator == 1u << power) return power;
  }
  throw std::invalid_argument("SmfWriter: the denominator of a meter is 1, 2, 4, 8, 16, 32 or 64");
}

}  // namespace

SmfWriter::SmfWriter(unsigned division, const std::string& title) : division_(division) {
  Require(division >= 1 && division <= 0x7FFF, "SmfWriter: a division is 1 to 32,767");
  AddPart(title);
}

void SmfWriter::Tempo(std::uint32_t tick, std::uint32_t microsecondsPerQuarter) {
  Require(microsecondsPerQuarter >= 1 && microsecondsPerQuarter <= 0xFF'FFFF,
          "SmfWriter: a tempo is 1 to 16,777,215 microseconds per quarter note");
  ByteString data;
  AppendNumber(data, microsecondsPerQuarter, 3);
  AddMeta_(0, tick, 0x51, data);
}

void SmfWriter::Meter(std::uint32_t tick, unsigned numerator, unsigned denominator) {
  Require(numerator >= 1 && numerator <= 255, "SmfWriter: the numerator of a meter is 1 to 255");
  // 24 MIDI clocks per click and 8 thirty-seconds per quarter note: what the format calls the usual case.
  AddMeta_(0, tick, 0x58, {Byte(numerator), Byte(PowerOfDenominator(denominator)), 24, 8});
}

void SmfWriter::Key(std::uint32_t tick, int sharps, bool minor) {
  Require(sharps >= -7 && sharps <= 7, "SmfWriter: a key has up to 7 sharps or flats");
  AddMeta_(0, tick, 0x59, {Byte(static_cast<std::uint32_t>(sharps)), Byte(minor ? 1 : 0)});
}

void SmfWriter::Marker(std::uint32_t tick, const std::string& text) {
  AddText_(0, tick, 0x06, text);
}

std::size_t SmfWriter::AddPart(const std::string& name) {
  tracks_.emplace_back();
  if (!name.empty()) AddText_(tracks_.size() - 1, 0, 0x03, name);
  return tracks_.size() - 1;
}

void SmfWriter::Program(std::size_t part, std::uint32_t tick, unsigned channel, unsigned program) {
  Require(channel <= 15 && program <= 127, "SmfWriter: a channel is 0 to 15, a program 0 to 127");
  Add_(part, tick, 1, {Byte(0xC0u | channel), Byte(program)});
}

void SmfWriter::Note(std::size_t part, std::uint32_t tick, std::uint32_t length, unsigned channel,
                     unsigned key, unsigned velocity) {
  Require(channel <= 15 && key <= 127, "SmfWriter: a channel is 0 to 15, a key 0 to 127");
  Require(velocity >= 1 && velocity <= 127, "SmfWriter: a velocity is 1 to 127");
  Require(length >= 1, "SmfWriter: a note lasts at least one tick");
  Add_(part, tick, 1, {Byte(0x90u | channel), Byte(key), Byte(velocity)});
  // A note on of velocity 0 ends the note and keeps the running status.
  Add_(part, tick + length, 0, {Byte(0x90u | channel), Byte(key), 0});
}

std::vector<std::uint8_t> SmfWriter::Bytes() const {
  std::vector<std::uint8_t> header;
  AppendNumber(header, 1, 2);
  AppendNumber(header, static_cast<std::uint32_t>(tracks_.size()), 2);
  AppendNumber(header, division_, 2);
  std::vector<std::uint8_t> out;
  AppendChunk(out, "MThd", header);
  for (const Track& track : tracks_) AppendChunk(out, "MTrk", TrackBytes_(track));
  return out;
}

void SmfWriter::Add_(std::size_t track, std::uint32_t tick, int rank, std::vector<std::uint8_t> bytes) {
  tracks_.at(track).push_back({tick, rank, std::move(bytes)});
}

void SmfWriter::AddMeta_(std::size_t track, std::uint32_t tick, std::uint8_t type,
                         const std::vector<std::uint8_t>& data) {
  std::vector<std::uint8_t> bytes{0xFF, type};
  AppendQuantity(bytes, static_cast<std::uint32_t>(data.size()));
  bytes.insert(bytes.end(), data.begin(), data.end());
  Add_(track, tick, 1, std::move(bytes));
}

void SmfWriter::AddText_(std::size_t track, std::uint32_t tick, std::uint8_t type, const std::string& text) {
  AddMeta_(track, tick, type, {text.begin(), text.end()});
}

std::vector<std::uint8_t> SmfWriter::TrackBytes_(const Track& track) const {
  Track sorted = track;
  std::stable_sort(sorted.begin(), sorted.end(), [](const Event& left, const Event& right) {
    return std::pair(left.tick, left.rank) < std::pair(right.tick, right.rank);
  });
  std::vector<std::uint8_t> out;
  std::uint32_t now = 0;
  std::uint8_t runningStatus = 0;
  for (const Event& event : sorted) {
    AppendQuantity(out, event.tick - now);
    now = event.tick;
    const std::uint8_t status = event.bytes.front();
    const bool omitStatus = status == runningStatus;
    runningStatus = status < 0xF0 ? status : std::uint8_t{0};
    out.insert(out.end(), event.bytes.begin() + (omitStatus ? 1 : 0), event.bytes.end());
  }
  AppendQuantity(out, std::max(now, endTick_) - now);
  out.insert(out.end(), {0xFF, 0x2F, 0x00});
  return out;
}

}  // namespace tesk_midi
