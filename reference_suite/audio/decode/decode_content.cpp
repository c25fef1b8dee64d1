#include "reference_suite/audio/decode/decode_content.h"

#include <cmath>
#include <cstddef>
#include <exception>

#include "exc/console/cout_buffer.h"
#include "reference_suite/audio/decode/decode_segments.h"
#include "reference_suite/audio/decode/decoding_places.h"
#include "reference_suite/audio/decode/decoding_thread.h"
#include "reference_suite/audio/decode/intake.h"
#include "reference_suite/audio/decode/resampler.h"
#include "suite/audio/sample_rates.h"

namespace tesk_audio {

namespace {

void Warn(const DecodeRequest& request, const std::string& text) {
  exc::CoutBuffer() << "WARNING: " << request.shownPath << ": " << text << "." << exc::EndlT();
}

std::string Counted(unsigned channels) {
  return std::to_string(channels) + (channels == 1 ? " channel" : " channels");
}

// Whoever asks for channels has looked at the file before.
void RequireChannels(const DecodedFormat& format, const DecodeRequest& request) {
  if (request.channels == 0 || request.channels == format.channels) return;
  ThrowUndecodable(format.isOgg, request.shownPath + ": it has " + Counted(format.channels) +
                                     " now and had " + Counted(request.channels) +
                                     " when the show was opened: the file has been replaced. Put the "
                                     "recording back as it was, or convert it to " +
                                     Counted(request.channels) + ".");
}

[[noreturn]] void RefuseLength(const DecodedFormat& format, long long length, const DecodeRequest& request) {
  ThrowUndecodable(format.isOgg, request.shownPath + ": " + std::to_string(length) +
                                     " frames are more than the " + std::to_string(request.maxFrames) +
                                     " that a song can have. Split the recording.");
}

// Runs the work on a thread of lower priority, and here when there is none to be had: a loader's own thread
// could not get its priority back for what it does afterwards.
void RunApart(const DecodingPlaces& places, const std::function<void()>& work) {
  std::exception_ptr failure;
  const auto run = [&] {
    try {
      work();
    } catch (...) {
      failure = std::current_exception();
    }
  };
  DecodingThread thread(run, places);
  if (!thread.Start()) run();
  thread.Join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace

void RequirePlayableFormat(const DecodedFormat& format, const DecodeRequest& request) {
  if (format.promisedFrames > request.maxFrames) RefuseLength(format, format.promisedFrames, request);
  // A song plays at its own rate where it is the show's.
  if (format.rateHz >= kLeastSampleRateHz && format.rateHz <= kMostSampleRateHz) return;
  ThrowUndecodable(format.isOgg, request.shownPath + ": it has " +
                                     std::to_string(std::llround(format.rateHz)) +
                                     " frames a second, and only " + std::to_string(kLeastSampleRateHz) +
                                     " to " + std::to_string(kMostSampleRateHz) +
                                     " can be played. Export the recording again at 48000 Hz.");
}

void RequirePlayableLength(const DecodedFormat& format, long long frames, const DecodeRequest& request) {
  if (frames == 0) {
    ThrowUndecodable(format.isOgg, request.shownPath + ": the " + format.name +
                                       " file holds no audio: not one frame could be decoded. Export the "
                                       "recording again.");
  }
  const bool converts = request.rateHz > 0.0 && request.rateHz != format.rateHz;
  const long long length = converts ? ResampledLength(frames, format.rateHz, request.rateHz) : frames;
  if (length > request.maxFrames) RefuseLength(format, length, request);
}

std::unique_ptr<MemoryContent> DecodeContent(AudioDecoder& decoder, const DecodeRequest& request) {
  const DecodedFormat& format = decoder.Format();
  RequirePlayableFormat(format, request);
  RequireChannels(format, request);
  Intake intake(format, request);
  if (format.frames > 0) {
    RequirePlayableLength(format, format.frames, request);
    const long long length = ResampledLength(format.frames, format.rateHz, intake.RateHz());
    RequireMemory(static_cast<unsigned long long>(length) * format.channels * sizeof(float), request);
  }
  const auto decode = [&] {
    decoder.Inspect();
    DecodeAll(decoder, intake, request);
  };
  if (request.places != nullptr && IsLong(format, request)) {
    RunApart(*request.places, decode);
  } else {
    decode();
  }
  std::unique_ptr<MemoryContent> content = intake.Finish();
  for (const std::string& text : decoder.Warnings()) Warn(request, text);
  if (intake.NotFinite() > 0) {
    Warn(request, std::to_string(intake.NotFinite()) + " samples that are not finite are replaced by 0");
  }
  if (intake.RateHz() != format.rateHz) {
    Warn(request, "its " + std::to_string(std::lround(format.rateHz)) + " Hz are resampled to " +
                      std::to_string(std::lround(intake.RateHz())) + " Hz");
  }
  return content;
}

}  // namespace tesk_audio
