#include "reference_suite/audio/decode/sndfile_decoder.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>

#include "exc/lock/scope_lock.h"
#include "reference_suite/audio/decode/decoding_stop.h"
#include "reference_suite/audio/decode/header_claims.h"
#include "reference_suite/audio/decode/library_words.h"
#include "reference_suite/audio/decode/mp3_front.h"
#include "reference_suite/audio/decode/mp3_scan.h"
#include "reference_suite/audio/decode/ogg_scan.h"
#include "reference_suite/audio/decode/sndfile_opening.h"

namespace tesk_audio {

namespace {

constexpr char kCutOff[] = "the file is shorter than its header says: it was cut off";

std::string FormatName(int format) {
  if ((format & SF_FORMAT_SUBMASK) == SF_FORMAT_OPUS) return "Ogg Opus";
  switch (format & SF_FORMAT_TYPEMASK) {
    case SF_FORMAT_WAV:
    case SF_FORMAT_WAVEX:
      return "WAV";
    case SF_FORMAT_RF64:
      return "RF64";
    case SF_FORMAT_AIFF:
      return "AIFF";
    case SF_FORMAT_FLAC:
      return "FLAC";
    case SF_FORMAT_MPEG:
      return "MP3";
    case SF_FORMAT_OGG:
      return "Ogg";
    default:
      break;
  }
  SF_FORMAT_INFO info{};
  info.format = format & SF_FORMAT_TYPEMASK;
  const bool known =
      sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) == 0 && info.name != nullptr;
  return known ? info.name : "unknown";
}

// How many bytes a sample has that is coded by itself; 0 for all others.
int BytesOfASample(int format) {
  switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
      return 1;
    case SF_FORMAT_PCM_16:
      return 2;
    case SF_FORMAT_PCM_24:
      return 3;
    case SF_FORMAT_PCM_32:
    case SF_FORMAT_FLOAT:
      return 4;
    case SF_FORMAT_DOUBLE:
      return 8;
    default:
      return 0;
  }
}

// Formats whose frames, or groups of frames, are coded each by itself, and that seek to the frame.
bool SeeksToTheFrame(const SF_INFO& info) {
  if (info.seekable == 0) return false;
  switch (info.format & SF_FORMAT_TYPEMASK) {
    case SF_FORMAT_WAV:
    case SF_FORMAT_WAVEX:
    case SF_FORMAT_RF64:
    case SF_FORMAT_AIFF:
    case SF_FORMAT_FLAC:
      return BytesOfASample(info.format) > 0;
    default:
      return false;
  }
}

bool IsMp3(const SF_INFO& info) {
  return (info.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_MPEG;
}

// Of an MP3 the library keeps back all that it decoded for a request in which it met damage.
std::size_t MostAtOnce(bool isMp3) {
  constexpr std::size_t kFrameOfMp3 = 1152;
  return isMp3 ? kFrameOfMp3 : std::numeric_limits<std::size_t>::max();
}

// The library refuses some MP3s for the length that they tell, or for the text in front.
bool MayBeMp3(const std::string& head) {
  if (ClaimedName(head) == "MP3") return true;
  const auto* const bytes = reinterpret_cast<const unsigned char*>(head.data());
  return head.size() >= MpegHeader::kBytes && ReadMpegHeader(bytes).has_value();
}

// Other kinds of MPEG audio than the scan knows are left to the library.
bool IsUnderstood(const Mp3Scan& scan, const DecodedFormat& format) {
  return scan.format.has_value() && scan.format->rateHz == std::lround(format.rateHz) &&
         scan.format->channels == format.channels;
}

// Of more than that nobody has so little left: what tells its length is damaged.
bool TellsTooMuch(const Mp3Scan& scan) {
  constexpr long long kTimes = 100;
  return scan.isTagged && scan.taggedFrames > kTimes * scan.frames;
}

// Whether the library plays all that is there, or says by itself what is missing.
bool IsLengthTrue(const Mp3Scan& scan, long long frames) {
  if (scan.isTagged && !scan.isVbri) return scan.taggedFrames >= scan.frames && !TellsTooMuch(scan);
  const long long found = scan.frames * scan.format->Samples();
  // Between the pieces of what is damaged there may be more than was found.
  return !scan.isVbri && (frames == found || (frames > found && scan.hasGaps));
}

std::string ChangeOf(const Mp3Scan& scan) {
  const MpegHeader& from = *scan.format;
  const MpegHeader& to = *scan.change;
  if (from.rateHz == to.rateHz) {
    return "the channels change inside, from " + std::to_string(from.channels) + " to " +
           std::to_string(to.channels);
  }
  return "the rate changes inside, from " + std::to_string(from.rateHz) + " to " + std::to_string(to.rateHz) +
         " Hz";
}

// "3:07.250"
std::string Place(long long frame, double rateHz) {
  const long long milliseconds = std::llround(static_cast<double>(frame) * 1000.0 / rateHz);
  char text[40];
  std::snprintf(text, sizeof text, "%lld:%02lld.%03lld", milliseconds / 60'000, milliseconds / 1000 % 60,
                milliseconds % 1000);
  return text;
}

long long PromisedFrames(const std::string& head, const SF_INFO& info) {
  const int bytes = BytesOfASample(info.format) * info.channels;
  return bytes > 0 ? static_cast<long long>(PromisedSampleBytes(head)) / bytes : 0;
}

}  // namespace

SndfileDecoder::SndfileDecoder(AudioFile& file, bool isOgg) : file_(file), input_(file), isOgg_(isOgg) {
  const bool isOpen = Open_();
  if (!isOpen && !MayBeMp3(file_.Head(kClaimBytes))) Refuse_();
  if (!isOpen || isMp3_) PlayAllOfMp3_(isOpen);
}

void SndfileDecoder::Closer_::operator()(SNDFILE* sound) const {
  const InsideLibrary inside;
  sf_close(sound);
}

bool SndfileDecoder::Open_() {
  // Before the library has anything that it would keep if there were no memory for it.
  const std::string head = file_.Head(kClaimBytes);
  SF_INFO info{};
  {
    exc::ScopeLock opening(SndfileOpening());
    const InsideLibrary inside;
    sound_.reset(input_.Open(&info));
    if (sound_ == nullptr) {
      const int error = sf_error(nullptr);
      file_.ThrowIfReadFailed();
      if (std::strcmp(sf_error_number(error), "Internal malloc () failed.") == 0) throw std::bad_alloc();
      return false;
    }
  }
  const bool isCounted = info.frames >= 0 && info.frames != SF_COUNT_MAX;
  format_ = {FormatName(info.format), static_cast<double>(info.samplerate),
             static_cast<unsigned>(info.channels), isCounted ? info.frames : -1, isOgg_};
  format_.promisedFrames = PromisedFrames(head, info);
  seeksToTheFrame_ = SeeksToTheFrame(info);
  isMp3_ = IsMp3(info);
  mostAtOnce_ = MostAtOnce(isMp3_);
  return true;
}

void SndfileDecoder::PlayAllOfMp3_(bool isOpen) {
  const Mp3Scan scan = ScanMp3(file_);
  file_.ThrowIfReadFailed();
  RequireWanted(file_.Name());
  if (!isOpen && !scan.format.has_value()) Refuse_();
  if (isOpen && !IsUnderstood(scan, format_)) return;
  if (scan.change.has_value()) {
    ThrowUndecodable(false, file_.Name() + ": this is a chain of MP3s, and " + ChangeOf(scan) +
                                ". Keep one recording in each file.");
  }
  if (scan.tagsInside > 0) {
    warnings_.push_back("several MP3s follow each other in this file; they are played as one");
  }
  if (TellsTooMuch(scan)) warnings_.emplace_back(kCutOff);
  hasGaps_ = scan.hasGaps && scan.taggedFrames < scan.frames;
  if (isOpen && IsLengthTrue(scan, format_.frames)) return;
  sound_.reset();
  input_.Replace(Mp3Front(scan), scan.start);
  if (!Open_()) Refuse_();
}

void SndfileDecoder::Refuse_() {
  const std::string name = ClaimedName(file_.Head(kClaimBytes));
  if (name.empty()) {
    ThrowUndecodable(isOgg_, file_.Name() +
                                 ": this is not audio that can be decoded. Use Ogg Vorbis, "
                                 "Ogg Opus, FLAC, WAV, AIFF or MP3.");
  }
  ThrowUndecodable(isOgg_,
                   file_.Name() + ": the " + name +
                       " file cannot be decoded: its header is damaged, cut off or of an unknown kind. "
                       "Export the recording again.");
}

void SndfileDecoder::Inspect() {
  if (IsCutOff(file_.Head(kClaimBytes), file_.Size())) {
    warnings_.emplace_back(kCutOff);
  }
  if (!format_.isOgg) return;
  const OggScan scan = ScanOgg(file_);
  file_.ThrowIfReadFailed();
  if (scan.chained) {
    ThrowUndecodable(true,
                     file_.Name() +
                         ": this is a chain of several Ogg streams, of which only the first would be heard. "
                         "Keep one recording in each file.");
  }
  if (scan.lostStart || scan.lostInside) {
    warnings_.push_back("the Ogg stream is damaged; what follows the damage comes too early");
  }
  if (scan.lostEnd) warnings_.push_back("the Ogg stream has no end: the file was cut off");
}

sf_count_t SndfileDecoder::ReadFrames_(float* frames, sf_count_t count) {
  const InsideLibrary inside;
  return sf_readf_float(sound_.get(), frames, count);
}

std::size_t SndfileDecoder::Read(float* frames, std::size_t count) {
  const sf_count_t got = ReadFrames_(frames, static_cast<sf_count_t>(std::min(count, mostAtOnce_)));
  metError_ = metError_ || sf_error(sound_.get()) != SF_ERR_NO_ERROR;
  if (got <= 0) {
    file_.ThrowIfReadFailed();
    return 0;
  }
  handedOut_ += got;
  return static_cast<std::size_t>(got);
}

bool SndfileDecoder::CanBeShared() const {
  return seeksToTheFrame_ && !metError_ && warnings_.empty();
}

bool SndfileDecoder::BeginAt(long long frame) {
  const InsideLibrary inside;
  return CanBeShared() && sf_seek(sound_.get(), frame, SEEK_SET) == frame;
}

std::vector<std::string> SndfileDecoder::Warnings() const {
  std::vector<std::string> warnings = warnings_;
  const bool hasStopped = sf_error(sound_.get()) != SF_ERR_NO_ERROR;
  if (hasStopped && isMp3_) {
    // The library has no words for it.
    warnings.push_back("damaged from " + Place(handedOut_, format_.rateHz) + " on; what follows is silence");
    return warnings;
  }
  if (hasStopped) {
    std::string text = sf_strerror(sound_.get());
    while (!text.empty() && text.back() == '.') text.pop_back();
    warnings.push_back("decoding met an error: " + text);
  }
  if (handedOut_ < format_.frames) {
    warnings.push_back("only " + std::to_string(handedOut_) + " of " + std::to_string(format_.frames) +
                       " frames could be decoded");
  } else if (hasGaps_) {
    warnings.push_back("the MP3 is damaged; what follows the damage comes too early");
  }
  return warnings;
}

}  // namespace tesk_audio
