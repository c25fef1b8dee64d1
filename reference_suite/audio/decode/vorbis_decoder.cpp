#include "reference_suite/audio/decode/vorbis_decoder.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>

#include "reference_suite/audio/decode/ogg_scan.h"

namespace tesk_audio {

namespace {

constexpr int kFramesAtATime = 4096;
// A position that leaps further than this is nonsense, not a lost page.
constexpr double kLongestGapSeconds = 600.0;

// Opening a chain of the shortest streams reads a file ten times.
constexpr long long kReadsOfAFile = 32;
constexpr long long kBytesOfAnyFile = 1 << 20;

}  // namespace

std::size_t VorbisDecoder::ReadCallback_(void* buffer, std::size_t size, std::size_t count, void* self) {
  auto* const decoder = static_cast<VorbisDecoder*>(self);
  if (size == 0) return 0;
  if (decoder->bytesGranted_ <= 0) {
    errno = EIO;
    return 0;
  }
  decoder->bytesGranted_ -= static_cast<long long>(size * count);
  return decoder->file_.Read(buffer, size * count) / size;
}

int VorbisDecoder::SeekCallback_(void* self, ogg_int64_t offset, int whence) {
  AudioFile& file = static_cast<VorbisDecoder*>(self)->file_;
  if (whence == SEEK_CUR) offset += file.Tell();
  if (whence == SEEK_END) offset += file.Size();
  return file.Seek(offset) ? 0 : -1;
}

long VorbisDecoder::TellCallback_(void* self) {
  return static_cast<long>(static_cast<VorbisDecoder*>(self)->file_.Tell());
}

void VorbisDecoder::GrantReads_() {
  bytesGranted_ = kReadsOfAFile * file_.Size() + kBytesOfAnyFile;
}

VorbisDecoder::VorbisDecoder(AudioFile& file) : file_(file) {
  file_.Seek(0);
  const ov_callbacks callbacks{ReadCallback_, SeekCallback_, nullptr, TellCallback_};
  GrantReads_();
  if (ov_open_callbacks(this, &stream_, nullptr, 0, callbacks) != 0) {
    file_.ThrowIfReadFailed();
    ThrowUndecodable(true, file_.Name() +
                               ": the Ogg Vorbis stream cannot be decoded: its headers are damaged or "
                               "cut off. Encode the recording again.");
  }
  try {
    const vorbis_info* info = ov_info(&stream_, 0);
    format_ = {"Ogg Vorbis", static_cast<double>(info->rate), static_cast<unsigned>(info->channels),
               ov_pcm_total(&stream_, -1), true};
    startOffset_ = startLeap_ = stream_.pcmlengths[0];
    RequireOneFormat_();
  } catch (...) {
    ov_clear(&stream_);
    throw;
  }
}

VorbisDecoder::~VorbisDecoder() {
  ov_clear(&stream_);
}

void VorbisDecoder::RequireOneFormat_() {
  const long links = ov_streams(&stream_);
  for (long link = 1; link < links; ++link) {
    const vorbis_info* info = ov_info(&stream_, static_cast<int>(link));
    const bool sameRate = static_cast<double>(info->rate) == format_.rateHz;
    if (sameRate && static_cast<unsigned>(info->channels) == format_.channels) continue;
    const std::string from = sameRate ? std::to_string(format_.channels) + " to " : "";
    const std::string change =
        sameRate ? "the channels change inside, from " + from + std::to_string(info->channels)
                 : "the rate changes inside, from " + std::to_string(std::lround(format_.rateHz)) + " to " +
                       std::to_string(info->rate) + " Hz";
    ThrowUndecodable(true, file_.Name() + ": this is a chain of " + std::to_string(links) +
                               " Ogg streams, and " + change + ". Keep one recording in each file.");
  }
}

void VorbisDecoder::Inspect() {
  const long long position = file_.Tell();
  const OggScan scan = ScanOgg(file_);
  file_.ThrowIfReadFailed();
  file_.Seek(position);
  if (scan.chained && ov_streams(&stream_) == 1) {
    ThrowUndecodable(true, file_.Name() +
                               ": this is a chain of Ogg streams that all bear the same number, which "
                               "cannot be told apart. Keep one recording in each file.");
  }
  if (scan.chained) {
    warnings_.push_back("several Ogg streams follow each other in this file; they are played as one");
  }
  if (scan.lostEnd) warnings_.push_back("the Ogg stream has no end: the file was cut off");
  if (scan.lostStart) FillGap_(startOffset_);
}

std::size_t VorbisDecoder::Read(float* frames, std::size_t count) {
  // Behind an open gap nothing is handed out: its length is not known yet.
  while (gapOpen_ || queueRead_ == QueuedFrames_()) {
    Piece piece;
    if (!DecodeSome_(std::min<std::size_t>(count, kFramesAtATime), &piece)) break;
    if (!gapOpen_ && queue_.empty() && piece.frames > 0) {
      Interleave_(piece, frames);
      handedOut_ += static_cast<long long>(piece.frames);
      return piece.frames;
    }
    Enqueue_(piece);
  }
  const std::size_t part = std::min(count, QueuedFrames_() - queueRead_);
  if (part == 0) file_.ThrowIfReadFailed();
  const auto from = queue_.begin() + static_cast<std::ptrdiff_t>(queueRead_ * format_.channels);
  std::copy_n(from, part * format_.channels, frames);
  queueRead_ += part;
  handedOut_ += static_cast<long long>(part);
  if (queueRead_ == QueuedFrames_()) {
    queue_.clear();
    queueRead_ = 0;
  }
  return part;
}

bool VorbisDecoder::DecodeSome_(std::size_t most, Piece* piece) {
  int link = 0;
  GrantReads_();
  const long got = ov_read_float(&stream_, &piece->channels, static_cast<int>(most), &link);
  odd_ = odd_ || got < 0;
  if (got == OV_HOLE) {
    if (!gapOpen_) gapAt_ = QueuedFrames_();
    gapOpen_ = true;
    return true;
  }
  if (got <= 0) {
    // Nothing behind the gap says where it stood, except the length that the last page gave.
    if (gapOpen_) FillGap_(format_.frames + startOffset_ - startLeap_ - lastTell_);
    return false;
  }
  // The stream tells its true position once a page has been read to its end, and leaps when some were lost.
  const long long tell = ov_pcm_tell(&stream_);
  long long leap = tell - lastTell_ - got;
  lastTell_ = tell;
  odd_ = odd_ || leap != 0;
  if (leap >= startLeap_) {
    leap -= startLeap_;
    startLeap_ = 0;
  }
  if (leap > 0) FillGap_(leap);
  piece->frames = static_cast<std::size_t>(got);
  return true;
}

void VorbisDecoder::Enqueue_(const Piece& piece) {
  const std::size_t index = queue_.size();
  queue_.resize(index + piece.frames * format_.channels);
  if (piece.frames > 0) Interleave_(piece, queue_.data() + index);
}

void VorbisDecoder::Interleave_(const Piece& piece, float* frames) const {
  const unsigned channels = format_.channels;
  if (channels == 2) {  // a loop that the compiler turns into vector code
    const float* const left = piece.channels[0];
    const float* const right = piece.channels[1];
    for (std::size_t frame = 0; frame < piece.frames; ++frame) {
      frames[2 * frame] = left[frame];
      frames[2 * frame + 1] = right[frame];
    }
    return;
  }
  for (unsigned channel = 0; channel < channels; ++channel) {
    const float* const from = piece.channels[channel];
    for (std::size_t frame = 0; frame < piece.frames; ++frame)
      frames[frame * channels + channel] = from[frame];
  }
}

void VorbisDecoder::FillGap_(long long frames) {
  const std::size_t at = gapOpen_ ? gapAt_ : QueuedFrames_();
  gapOpen_ = false;
  if (frames <= 0 || static_cast<double>(frames) > kLongestGapSeconds * format_.rateHz) return;
  lostFrames_ += frames;
  queue_.insert(queue_.begin() + static_cast<std::ptrdiff_t>(at * format_.channels),
                static_cast<std::size_t>(frames) * format_.channels, 0.0F);
}

bool VorbisDecoder::CanBeShared() const {
  return stream_.links == 1 && startOffset_ == 0 && !odd_ && warnings_.empty() && lostFrames_ == 0;
}

bool VorbisDecoder::BeginAt(long long frame) {
  lastTell_ = frame;
  GrantReads_();
  return CanBeShared() && ov_pcm_seek(&stream_, frame) == 0 && ov_pcm_tell(&stream_) == frame;
}

std::vector<std::string> VorbisDecoder::Warnings() const {
  std::vector<std::string> warnings = warnings_;
  if (lostFrames_ > 0) {
    warnings.push_back("the Ogg stream is damaged; " + std::to_string(lostFrames_) +
                       " frames are lost and silent");
  }
  if (handedOut_ < format_.frames) {
    warnings.push_back("only " + std::to_string(handedOut_) + " of " + std::to_string(format_.frames) +
                       " frames could be decoded");
  }
  return warnings;
}

}  // namespace tesk_audio
