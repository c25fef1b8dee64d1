#include <new>
#include <stdexcept>

#include "Sources/audio_player/audio_player.h"
#include "Sources/file_loader/error_ids.h"
#include "suite/audio/errors.h"
#include "suite/utility/format.h"

bool AudioPlayer::CheckFileLoaderExceptions(FileLoaderData* fld) {
  loaderResultReady_ = true;
  const bool failed = fld->GetErrorOccurred();
  if (failed) {
    loaderErrorOccurred_ = true;
    loaderErrorId_ = fld->GetErrorId();
    try {
      loaderErrorReason_ = fld->GetErrorReason();
    } catch (const std::bad_alloc&) {
      // No memory for the words: that there was an error, and of which kind, still gets through.
      loaderErrorReason_.clear();
    }
  }
  loaderCondition_.Signal<AudioPlayer>(*this);
  return failed;
}

bool AudioPlayer::GetFileLoaderErrorOccurred() {
  exc::ScopeLock lock(*this);
  // One wait and no loop, by contract.
  if (!loaderResultReady_) loaderCondition_.WaitWhileLocked(lock);
  return loaderErrorOccurred_;
}

void AudioPlayer::ThrowIfThreadExceptions() {
  if (!GetFileLoaderErrorOccurred()) return;
  exc::ScopeLock lock(*this);
  switch (loaderErrorId_) {
    case file_loader::kOggVorbisDecodeError:
      throw tesk_audio::OggVorbisDecodeError(loaderErrorReason_);
    case file_loader::kAudioSampleContentError:
      throw tesk_audio::AudioSampleContentError(loaderErrorReason_);
    case file_loader::kTeskAudioError:
      throw tesk_audio::TESKAudioError(loaderErrorReason_);
    case file_loader::kOtherError:
      throw std::runtime_error(loaderErrorReason_);
    default:
      throw std::logic_error(exc::format("Unknown FileLoader exception: %s", loaderErrorReason_.c_str()));
  }
}
