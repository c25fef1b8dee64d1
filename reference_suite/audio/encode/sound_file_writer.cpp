#include "reference_suite/audio/encode/sound_file_writer.h"

#include <sndfile.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <string_view>
#include <utility>
#include <vector>

#include "exc/lock/scope_lock.h"
#include "reference_suite/audio/decode/sndfile_opening.h"
#include "reference_suite/audio/encode/ogg_serial.h"
#include "reference_suite/audio/encode/part_file.h"
#include "reference_suite/audio/encode/peak_time.h"
#include "reference_suite/audio/encode/sound_file_error.h"
#include "reference_suite/audio/text/shown_path.h"

namespace tesk_audio {
namespace {

int ToLibraryFormat(SoundFileFormat format) {
  switch (format) {
    case SoundFileFormat::Float:
      return SF_FORMAT_RF64 | SF_FORMAT_FLOAT;
    case SoundFileFormat::Pcm24:
      return SF_FORMAT_RF64 | SF_FORMAT_PCM_24;
    case SoundFileFormat::Pcm16:
      return SF_FORMAT_RF64 | SF_FORMAT_PCM_16;
    case SoundFileFormat::Flac:
      return SF_FORMAT_FLAC | SF_FORMAT_PCM_24;
    case SoundFileFormat::OggVorbis:
      return SF_FORMAT_OGG | SF_FORMAT_VORBIS;
  }
  return 0;
}

// What the encoder is given at a time, however the frames come: its bytes may depend on it, and it may keep
// the whole of a request on its stack.
constexpr std::size_t kBlock = 4096;  // frames

// Of a sample in the file; 0 for formats that take floating point as it is.
int BitsOf(SoundFileFormat format) {
  if (format == SoundFileFormat::Pcm16) return 16;
  return format == SoundFileFormat::Pcm24 || format == SoundFileFormat::Flac ? 24 : 0;
}

// The nearest number that `bits` hold, in the upper bits, as the library wants it. The library's own scale is
// a little under that with which files are read: loud samples of a recording would come back one step softer.
int ToInteger(float sample, int bits) {
  if (std::isnan(sample)) return 0;
  const double scale = std::ldexp(1.0, bits - 1);
  const double nearest = std::nearbyint(static_cast<double>(sample) * scale);
  return static_cast<int>(std::ldexp(std::clamp(nearest, -scale, scale - 1.0), 32 - bits));
}

PartFile& FileOf(void* user) {
  return *static_cast<PartFile*>(user);
}

// What the library asks of a file; `user` is the PartFile.
sf_count_t GetLength(void* user) {
  return FileOf(user).GetLength();
}
sf_count_t Seek(sf_count_t offset, int whence, void* user) {
  return FileOf(user).Seek(offset, whence);
}
sf_count_t Read(void* bytes, sf_count_t count, void* user) {
  return FileOf(user).Read(bytes, count);
}
// All is taken, whatever has become of it: an encoder that is told of a failure forgets what it holds. The
// file remembers the failure and is asked after every call of the library.
sf_count_t Write(const void* bytes, sf_count_t count, void* user) {
  FileOf(user).Write(bytes, count);
  return count;
}
sf_count_t Tell(void* user) {
  return FileOf(user).Seek(0, SEEK_CUR);
}

}  // namespace

std::optional<SoundFileFormat> FormatOfName(const std::string& path) {
  const auto endsIn = [&](std::string_view ending) {
    return path.size() >= ending.size() &&
           std::equal(ending.rbegin(), ending.rend(), path.rbegin(), [](char wanted, char letter) {
             return wanted == std::tolower(static_cast<unsigned char>(letter));
           });
  };
  if (endsIn(".wav")) return SoundFileFormat::Float;
  if (endsIn(".flac")) return SoundFileFormat::Flac;
  if (endsIn(".ogg")) return SoundFileFormat::OggVorbis;
  return std::nullopt;
}

struct SoundFileWriter::State {
  State(const std::string& filePath, SoundFileFormat fileFormat)
      : path(filePath), format(fileFormat), file(filePath) {}
  ~State() {
    if (encoder != nullptr) sf_close(encoder);
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  const std::string path;
  const SoundFileFormat format;
  PartFile file;  // outlives the encoder, which writes to it while it is closed
  SNDFILE* encoder = nullptr;
  unsigned channels = 0;
  std::vector<float> block;    // fewer than kBlock frames that the encoder does not have yet
  std::vector<float> writing;  // a block on its way
  std::vector<int> integers;   // a block on its way into an integer format
};

SoundFileWriter::SoundFileWriter(const std::string& path, SoundFileFormat format, double rateHz,
                                 unsigned channels)
    : state_(std::make_unique<State>(path, format)) {
  SF_VIRTUAL_IO io{GetLength, Seek, Read, tesk_audio::Write, Tell};
  SF_INFO info{};
  info.samplerate = static_cast<int>(std::lround(rateHz));
  info.channels = static_cast<int>(channels);
  info.format = ToLibraryFormat(format);
  state_->channels = channels;
  exc::ScopeLock opening(SndfileOpening());
  state_->encoder = sf_open_virtual(&io, SFM_WRITE, &info, &state_->file);
  state_->file.Check();
  if (state_->encoder == nullptr) {
    throw SoundFileError(ShownPath(path) + ": cannot be written: " + sf_strerror(nullptr) +
                         " Choose another format or another rate.");
  }
  sf_command(state_->encoder, SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
}

SoundFileWriter::~SoundFileWriter() = default;

void SoundFileWriter::Write(const float* frames, std::size_t frameCount) {
  std::vector<float>& block = state_->block;
  for (const float* const end = frames + frameCount * state_->channels; frames != end;) {
    const std::size_t room = kBlock * state_->channels - block.size();
    const std::size_t count = std::min(room, static_cast<std::size_t>(end - frames));
    block.insert(block.end(), frames, frames + count);
    frames += count;
    if (count == room) WriteBlock_();
  }
}

// Gives the encoder what has gathered.
void SoundFileWriter::WriteBlock_() {
  std::vector<float>& frames = state_->writing;
  frames.clear();
  frames.swap(state_->block);  // each keeps its memory
  const auto count = static_cast<sf_count_t>(frames.size() / state_->channels);
  const int bits = BitsOf(state_->format);
  sf_count_t written = 0;
  if (bits == 0) {
    written = sf_writef_float(state_->encoder, frames.data(), count);
  } else {
    state_->integers.resize(frames.size());
    std::transform(frames.begin(), frames.end(), state_->integers.begin(),
                   [bits](float sample) { return ToInteger(sample, bits); });
    written = sf_writef_int(state_->encoder, state_->integers.data(), count);
  }
  state_->file.Check();
  if (written != count) {
    throw SoundFileError(ShownPath(state_->path) + ": cannot be written: " + sf_strerror(state_->encoder));
  }
}

void SoundFileWriter::Commit() {
  WriteBlock_();
  const int status = sf_close(std::exchange(state_->encoder, nullptr));
  state_->file.Check();
  if (status != 0) {
    throw SoundFileError(ShownPath(state_->path) + ": cannot be written: " + sf_error_number(status));
  }
  if (state_->file.GetLength() == 0) {
    throw SoundFileError(ShownPath(state_->path) +
                         ": cannot be written: this format needs at least one frame. Choose another format.");
  }
  if (state_->format == SoundFileFormat::OggVorbis) FixOggSerial(state_->file);
  if (state_->format == SoundFileFormat::Float) ClearPeakTime(state_->file);
  state_->file.Commit();
}

}  // namespace tesk_audio
