#include <stdexcept>

#include "Sources/audio_player/audio_player.h"
#include "Sources/audio_player/errors.h"
#include "Sources/audio_player/source_path.h"
#include "exc/assertion/require_at.h"
#include "exc/text/equal.h"
#include "suite/audio/audio_sample_content.h"
#include "suite/audio/audio_sample_output.h"

namespace {

// What the converter starts with, too. Only asked for before there is an output.
constexpr double kRateWithoutOutputHz = 44100.0;

}  // namespace

long long AudioPlayer::ReadSamples(tesk_audio::SampleCount* ioPacketCount, void* buffer) {
  if (ioPacketCount->GetUnscaled() == 0) return 0;
  long long count = ioPacketCount->GetUnscaled();
  long long result = 0;
  try {
    const tesk_audio::AudioSampleContent& content = *GetCurrentSongContent();
    result = content.Read(GetSampleIndex(), &count, buffer);
  } catch (const SongNotLoaded&) {
    // The song runs on in silence: `count` stays what was asked for, so that the position keeps moving.
  }
  // Only now, by contract: a wrong scale is found once samples have been read. The text is known to hosts,
  // blanks included.
  // clang-format off
  EXC_REQUIRE_AT(exc::equal( ioPacketCount->GetScale(), static_cast<long double>(1.0)),
                 "ReadSamples", audio_player::kSourcePath, 392);
  // clang-format on
  ioPacketCount->SetUnscaled(count);
  AddToSampleIndex(count);
  return result;
}

long long AudioPlayer::ReadSamplesAt(long long sampleIndex, long long* ioCount, void* buffer) {
  if (*ioCount == 0) return 0;
  try {
    return GetCurrentSongContent()->Read(sampleIndex, ioCount, buffer);
  } catch (const SongNotLoaded&) {
    return 0;
  }
}

tesk_audio::AudioSampleContent* AudioPlayer::GetCurrentSongContent() {
  exc::ScopeLock lock(*this);
  try {
    tesk_audio::AudioSampleContent* const content = decodedContents_.at(GetCurrentSongNumber());
    if (!MayBeRead_(*content)) throw SongNotLoaded("The output has refused the audio of this song.");
    return content;
  } catch (const std::out_of_range& error) {
    throw SongNotLoaded(error.what());
  }
}

double AudioPlayer::GetTotalSampleCount() {
  try {
    return static_cast<double>(GetCurrentSongContent()->GetSampleCount());
  } catch (const SongNotLoaded&) {
    return 0.0;
  }
}

double AudioPlayer::GetTotalDurationSeconds() {
  return GetTotalSampleCount() / GetSampleRateHz();
}

long long AudioPlayer::GetElapsedSampleCount() {
  tesk_audio::AudioSampleOutput* const output = Output_();
  return output != nullptr ? output->GetElapsedSampleCount() : 0;
}

double AudioPlayer::GetSampleRateHz() {
  tesk_audio::AudioSampleOutput* const output = Output_();
  return output != nullptr ? output->GetSampleRateHz() : kRateWithoutOutputHz;
}

double AudioPlayer::GetElapsedSeconds() {
  return static_cast<double>(GetElapsedSampleCount()) / GetSampleRateHz();
}
