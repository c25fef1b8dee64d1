#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "reference_suite/midi/standard_midi_file/byte_cursor.h"
#include "reference_suite/midi/standard_midi_file/smf_limits.h"
#include "reference_suite/midi/standard_midi_file/smf_messages.h"
#include "reference_suite/midi/standard_midi_file/smf_reader.h"
#include "reference_suite/midi/standard_midi_file/track_reader.h"

namespace tesk_midi {

namespace {

constexpr std::uint32_t kHeaderType = 0x4D546864;  // "MThd"
constexpr std::uint32_t kTrackType = 0x4D54726B;   // "MTrk"
constexpr std::uint32_t kRiffType = 0x52494646;    // "RIFF"
constexpr std::uint32_t kMidiForm = 0x524D4944;    // "RMID"
constexpr std::size_t kRiffHeadBytes = 12;
constexpr std::size_t kChunkHeadBytes = 8;
constexpr std::size_t kHeaderBytes = 6;
constexpr std::size_t kTrackCountOffset = 10;

const char kDamaged[] = "the file is damaged or cut off, export it again";
const char kExport[] = "export it as a Standard MIDI File of type 0 or 1";

// `cursor` stands behind the type.
[[noreturn]] void RefuseRiff(ByteCursor cursor) {
  const bool hasForm = cursor.Remaining() >= kRiffHeadBytes - sizeof(kRiffType);
  if (hasForm) cursor.U32("the length of the container");
  if (hasForm && cursor.U32("the container's form") == kMidiForm)
    RefuseSmf(cursor.Name(), 0, "a RIFF container (RMID) around the MIDI data", kExport);
  RefuseSmf(cursor.Name(), 0, "a RIFF file, such as WAV, and no MIDI", "put the song's MIDI file there");
}

// The first chunk's length, after its type has been checked.
std::uint32_t ReadHeaderHead(ByteCursor& cursor) {
  if (cursor.AtEnd()) RefuseSmf(cursor.Name(), 0, "an empty file", kExport);
  const std::uint32_t type = cursor.U32("the file's type");
  if (type == kRiffType) RefuseRiff(cursor);
  if (type != kHeaderType) {
    RefuseSmf(cursor.Name(), 0, "bytes " + HexText(type, 8) + " where a MIDI file has 4D546864 (MThd)",
              kExport);
  }
  const std::uint32_t length = cursor.U32("the length of the header");
  if (length < kHeaderBytes || length > cursor.Remaining()) {
    RefuseSmf(cursor.Name(), 4,
              "a header of " + std::to_string(length) + " bytes where the file has " +
                  std::to_string(cursor.Remaining()) + " left and a header at least 6",
              kDamaged);
  }
  return length;
}

unsigned CheckedDivision(const ByteCursor& header, std::size_t offset, unsigned word) {
  if ((word & 0x8000u) != 0) {
    const unsigned framesPerSecond = 256 - (word >> 8);
    RefuseSmf(header.Name(), offset,
              "an SMPTE division " + HexText(word, 4) + " (" + std::to_string(framesPerSecond) +
                  " frames per second, " + std::to_string(word & 0xFFu) + " ticks per frame)",
              "export it with ticks per quarter note");
  }
  if (word == 0) {
    RefuseSmf(header.Name(), offset, "a division of 0 ticks per quarter note",
              "export it again, with 480 for instance");
  }
  return word;
}

// Fills in format and division; returns the number of tracks that the header promises.
unsigned ReadHeader(ByteCursor header, StandardMidiFile& file) {
  const std::size_t formatOffset = header.Offset();
  file.format = header.U16("the format");
  if (file.format > 1) {
    RefuseSmf(header.Name(), formatOffset, "a MIDI file of type " + std::to_string(file.format), kExport);
  }
  const unsigned promisedTracks = header.U16("the number of tracks");
  const std::size_t divisionOffset = header.Offset();
  file.division = CheckedDivision(header, divisionOffset, header.U16("the division"));
  return promisedTracks;
}

// Whether what is left is no chunk: some programs leave bytes behind the last track.
bool IsNoChunk(const ByteCursor& cursor) {
  ByteCursor rest = cursor;
  if (rest.Remaining() < kChunkHeadBytes) return true;
  const std::uint32_t type = rest.U32("the type of a chunk");
  const std::uint32_t length = rest.U32("the length of a chunk");
  return type != kTrackType && length > rest.Remaining();
}

void WarnOfRest(const ByteCursor& cursor, SmfProgress& progress) {
  progress.warnings.Add(cursor.Offset(), std::to_string(cursor.Remaining()) + " bytes behind the last track",
                        "they are ignored");
}

// Reads every track and skips all other chunks; returns the number of tracks.
std::size_t ReadChunks(ByteCursor& cursor, std::size_t promisedTracks, SmfProgress& progress) {
  std::size_t trackCount = 0;
  while (!cursor.AtEnd()) {
    if (trackCount != 0 && trackCount >= promisedTracks && IsNoChunk(cursor)) {
      WarnOfRest(cursor, progress);
      break;
    }
    const std::size_t start = cursor.Offset();
    const bool isTrack = cursor.U32("the type of a chunk") == kTrackType;
    const std::uint32_t length = cursor.U32("the length of a chunk");
    if (isTrack) ++trackCount;
    if (trackCount > kMaxSmfTracks) {
      RefuseSmf(cursor.Name(), start, "more than " + std::to_string(kMaxSmfTracks) + " tracks",
                "merge tracks, or export as type 0");
    }
    if (length > cursor.Remaining()) {
      std::string what = "a chunk";
      if (isTrack) what = "track " + std::to_string(trackCount);
      RefuseSmf(cursor.Name(), start,
                what + " of " + std::to_string(length) + " bytes where the file has " +
                    std::to_string(cursor.Remaining()) + " left",
                kDamaged);
    }
    if (isTrack) {
      TrackReader(cursor.Split(length, "track " + std::to_string(trackCount)), progress).Read();
    } else {
      cursor.Take(length, "a chunk");
    }
  }
  return trackCount;
}

void CheckTrackCount(const ByteCursor& cursor, std::size_t promised, std::size_t found,
                     SmfProgress& progress) {
  if (found == 0) RefuseSmf(cursor.Name(), cursor.Offset(), "no track", kDamaged);
  if (promised != found) {
    progress.warnings.Add(
        kTrackCountOffset,
        "the header promises " + std::to_string(promised) + " tracks, the file has " + std::to_string(found),
        "those that are there are read");
  } else if (progress.file.format == 0 && found > 1) {
    progress.warnings.Add(kTrackCountOffset,
                          "a file of type 0 with " + std::to_string(found) + " tracks where one belongs",
                          "all are read");
  }
}

void WarnOfLateTempo(SmfProgress& progress) {
  const auto& tempos = progress.file.tempos;
  if (!tempos.empty() && tempos.front().tick == 0) return;
  std::string span = "throughout";
  if (!tempos.empty()) span = "until the first one at tick " + std::to_string(tempos.front().tick);
  progress.warnings.Add(0, "no tempo at tick 0", "120 quarter notes per minute hold " + span);
}

// The tracks stand one behind the other, each in tick order: a stable sort keeps track order within a tick.
template <class Event>
void MergeTracks(std::vector<Event>& events) {
  std::stable_sort(events.begin(), events.end(),
                   [](const Event& left, const Event& right) { return left.tick < right.tick; });
}

}  // namespace

StandardMidiFile ParseSmf(std::span<const std::uint8_t> bytes, const std::string& displayName) {
  if (bytes.size() > kMaxSmfBytes) {
    RefuseSmf(displayName, kMaxSmfBytes, "more than " + std::to_string(kMaxSmfBytes) + " bytes",
              "leave out what the show does not need, such as notes and SysEx");
  }
  StandardMidiFile file;
  SmfWarnings warnings(displayName);
  SmfProgress progress{file, warnings};
  ByteCursor cursor(bytes, displayName, "the file");
  const std::uint32_t headerLength = ReadHeaderHead(cursor);
  const std::size_t promised = ReadHeader(cursor.Split(headerLength, "the header"), file);
  const std::size_t found = ReadChunks(cursor, promised, progress);
  CheckTrackCount(cursor, promised, found, progress);
  MergeTracks(file.tempos);
  MergeTracks(file.meters);
  MergeTracks(file.keys);
  MergeTracks(file.markers);
  WarnOfLateTempo(progress);
  file.warnings = warnings.Take();
  return file;
}

}  // namespace tesk_midi
