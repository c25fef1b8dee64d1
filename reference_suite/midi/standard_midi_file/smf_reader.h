#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include "reference_suite/midi/standard_midi_file/smf_error.h"
#include "reference_suite/midi/standard_midi_file/standard_midi_file.h"

namespace tesk_midi {

// Reading Standard MIDI Files. What cannot be trusted is refused with SmfError; what is odd but unambiguous
// is read and told in StandardMidiFile::warnings. The limits stand in smf_limits.h.
//
// Threads    ANY; no state, no locks. Both allocate, and ReadSmf waits for the disk.

// Reads the file that `bytes` holds. `displayName` is what messages call it.
StandardMidiFile ParseSmf(std::span<const std::uint8_t> bytes, const std::string& displayName);

// Reads the file at `path`, which must be a regular file or a link to one: pipes and devices are refused
// before anything is read from them, and without waiting for a writer.
StandardMidiFile ReadSmf(const std::filesystem::path& path);
StandardMidiFile ReadSmf(const std::filesystem::path& path, const std::string& displayName);

}  // namespace tesk_midi
