#include <algorithm>
#include <new>
#include <utility>

#include "Sources/audio_player/audio_player.h"
#include "Sources/audio_player/source_path.h"
#include "exc/assertion/require_at.h"
#include "suite/audio/audio_sample_content.h"
#include "suite/audio/audio_sample_output.h"

void AudioPlayer::Shutdown() {
  std::unique_ptr<tesk_audio::AudioSampleOutput> output;
  {
    exc::ScopeLock lock(*this);
    EXC_REQUIRE_AT(this->GetPlayerState() == PlayerState::STOP, "Shutdown", audio_player::kSourcePath, 1019);
    output = TakeOutput_();
  }
  DeleteOutput_(std::move(output));
}

AudioPlayer::~AudioPlayer() {
  deleterThreadData_->Exit();
  pthread_join(deleterThread_, nullptr);

  // No song is awaited any more: a loader that ends now starts no playback.
  {
    exc::ScopeLock lock(*this);
    waitForAudio_.Cancel();
    isEnding_ = true;
  }
  EndLoaders_();

  std::unique_ptr<tesk_audio::AudioSampleOutput> output;
  {
    exc::ScopeLock lock(*this);
    output = TakeOutput_();
  }
  DeleteOutput_(std::move(output));

  // Until its output was gone, a song that ran on into the next could start loaders and the update generator.
  EndLoaders_();
  guiUpdate_.Pause();
  FreeAllContents_();
}

// From here on nobody finds the output any more.
std::unique_ptr<tesk_audio::AudioSampleOutput> AudioPlayer::TakeOutput_() {
  IsOutputInitialized_(false);
  return std::exchange(audioSampleOutput_, nullptr);
}

// Whoever found the output before it was taken out is done with it when it goes: the update generator and a
// loader that is starting playback. The player lock is not held: both need it, and so does the output's own
// thread, which the deletion waits for.
void AudioPlayer::DeleteOutput_(std::unique_ptr<tesk_audio::AudioSampleOutput> output) {
  if (output == nullptr) return;
  guiUpdate_.Pause();
  WaitForFinishingLoader_();
  output.reset();
}

void AudioPlayer::WaitForFinishingLoader_() {
  // A loop, because one wait may end early.
  while (fileLoaderIsFinishing_.GetIsSet()) WaitForCancelAndPassItOn_(fileLoaderIsFinishing_);
}

// Those in the map are joined; one that has left it may still be on its way out, or about to start playback.
void AudioPlayer::EndLoaders_() {
  try {
    CleanUpExtraFileLoaderThreads_({});
  } catch (const std::bad_alloc&) {
    EndLoadersOneByOne_();
  }
  loadersInside_->WaitUntilNone();
}

// Where there is no memory for a list of all of them.
void AudioPlayer::EndLoadersOneByOne_() {
  while (true) {
    std::string song;
    {
      exc::ScopeLock lock(*this);
      const auto entry = std::find_if(fileLoaders_.begin(), fileLoaders_.end(),
                                      [](const auto& loader) { return !loader.second->Joined(); });
      if (entry == fileLoaders_.end()) return;
      song = entry->first;
    }
    CleanUpFileLoaderThread_(song);
  }
}

// With the lock held, unlike everywhere else: nobody is left who could want it.
void AudioPlayer::FreeAllContents_() {
  exc::ScopeLock lock(*this);
  for (const auto& [song, content] : decodedContents_) delete content;
  decodedContents_.clear();
  for (const tesk_audio::AudioSampleContent* content : contentsToDelete_) delete content;
  contentsToDelete_.clear();
}
