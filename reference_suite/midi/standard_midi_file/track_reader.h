#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "reference_suite/midi/standard_midi_file/byte_cursor.h"
#include "reference_suite/midi/standard_midi_file/smf_messages.h"
#include "reference_suite/midi/standard_midi_file/standard_midi_file.h"

namespace tesk_midi {

// What the tracks of one file share while it is read.
struct SmfProgress {
  StandardMidiFile& file;  // events are appended track by track, to be sorted when all are read
  SmfWarnings& warnings;
  std::size_t eventCount = 0;
};

// Reads the events of one track chunk.
//
// Errors     SmfError for whatever does not fit its chunk or means nothing.
// Threads    plain object, used once.
class TrackReader {
 public:
  TrackReader(ByteCursor track, SmfProgress& progress) : cursor_(track), progress_(progress) {}

  // Appends the track's tempos, meters, keys and markers and raises the end tick of the file.
  void Read();

 private:
  // ---- track_reader.cpp
  void ReadEvent_();
  void AdvanceTick_();
  void ReadChannelMessage_(std::uint8_t firstData);
  void ResumeRunningStatus_();
  void ReadSysEx_(std::uint8_t status);
  void Finish_();

  // ---- meta_events.cpp
  void ReadMeta_();
  std::span<const std::uint8_t> RequireLength_(std::span<const std::uint8_t> data, std::size_t length,
                                               const char* what);
  void AddTempo_(std::span<const std::uint8_t> data);
  void AddMeter_(std::span<const std::uint8_t> data);
  void AddKey_(std::span<const std::uint8_t> data);
  void AddMarker_(std::span<const std::uint8_t> data);
  void EndTrack_(std::span<const std::uint8_t> data);

  ByteCursor cursor_;
  SmfProgress& progress_;
  std::size_t eventOffset_ = 0;  // of the event being read, for messages
  std::uint32_t tick_ = 0;
  std::uint8_t lastStatus_ = 0;  // of the last channel message, 0 before the first
  bool statusCancelled_ = false;
  bool toldOfCancelledStatus_ = false;
  bool ended_ = false;
};

}  // namespace tesk_midi
