#include "reference_suite/midi/standard_midi_file/track_reader.h"

#include <algorithm>
#include <limits>
#include <string>

#include "reference_suite/midi/standard_midi_file/smf_limits.h"

namespace tesk_midi {

namespace {

const char kDamaged[] = "the file is damaged, export it again";

// Program change (C) and channel pressure (D) carry one data byte, all other channel messages two.
int DataByteCount(std::uint8_t status) {
  return (status & 0xE0u) == 0xC0u ? 1 : 2;
}

}  // namespace

void TrackReader::Read() {
  while (!ended_ && !cursor_.AtEnd()) ReadEvent_();
  Finish_();
}

void TrackReader::ReadEvent_() {
  eventOffset_ = cursor_.Offset();
  AdvanceTick_();
  if (++progress_.eventCount > kMaxSmfEvents) {
    RefuseSmf(cursor_.Name(), eventOffset_, "more than " + std::to_string(kMaxSmfEvents) + " events",
              "leave out what the show does not need, such as notes and controllers");
  }
  eventOffset_ = cursor_.Offset();
  const std::uint8_t status = cursor_.U8("an event");
  if (status < 0x80) {
    ResumeRunningStatus_();
    ReadChannelMessage_(status);
  } else if (status < 0xF0) {
    lastStatus_ = status;
    statusCancelled_ = false;
    ReadChannelMessage_(cursor_.U8("a channel message"));
  } else if (status == 0xFF) {
    statusCancelled_ = true;
    ReadMeta_();
  } else {
    statusCancelled_ = true;
    ReadSysEx_(status);
  }
}

void TrackReader::AdvanceTick_() {
  const std::uint32_t delta = cursor_.Quantity("a delta time");
  if (delta > std::numeric_limits<std::uint32_t>::max() - tick_) {
    RefuseSmf(
        cursor_.Name(), eventOffset_,
        cursor_.Place() + " runs past tick " + std::to_string(std::numeric_limits<std::uint32_t>::max()),
        kDamaged);
  }
  tick_ += delta;
}

// The status byte was left out, and what was read in its place is a data byte.
void TrackReader::ResumeRunningStatus_() {
  if (lastStatus_ == 0) {
    RefuseSmf(cursor_.Name(), eventOffset_, "a data byte without a status byte in " + cursor_.Place(),
              kDamaged);
  }
  if (statusCancelled_ && !toldOfCancelledStatus_) {
    toldOfCancelledStatus_ = true;
    progress_.warnings.Add(eventOffset_,
                           cursor_.Place() + " leaves out a status byte after a meta event or SysEx",
                           "the last status is taken to hold");
  }
}

// Channel messages carry nothing that a show uses; they are only walked through.
void TrackReader::ReadChannelMessage_(std::uint8_t firstData) {
  const bool hasSecond = DataByteCount(lastStatus_) == 2;
  const std::uint8_t secondData = hasSecond ? cursor_.U8("a channel message") : std::uint8_t{0};
  if (((firstData | secondData) & 0x80u) != 0) {
    RefuseSmf(cursor_.Name(), eventOffset_, "a status byte inside a channel message in " + cursor_.Place(),
              kDamaged);
  }
}

void TrackReader::ReadSysEx_(std::uint8_t status) {
  if (status != 0xF0 && status != 0xF7) {
    RefuseSmf(cursor_.Name(), eventOffset_, "status byte " + HexText(status, 2) + " in " + cursor_.Place(),
              "such messages have no place in a file, export it again");
  }
  const std::uint32_t length = cursor_.Quantity("the length of a SysEx");
  cursor_.Take(length, "a SysEx");
}

void TrackReader::Finish_() {
  if (!ended_) {
    progress_.warnings.Add(cursor_.Offset(), cursor_.Place() + " has no End Of Track",
                           "its last event at tick " + std::to_string(tick_) + " is taken as its end");
  } else if (!cursor_.AtEnd()) {
    progress_.warnings.Add(
        cursor_.Offset(),
        std::to_string(cursor_.Remaining()) + " bytes after the End Of Track of " + cursor_.Place(),
        "they are ignored");
  }
  progress_.file.endTick = std::max(progress_.file.endTick, tick_);
}

}  // namespace tesk_midi
