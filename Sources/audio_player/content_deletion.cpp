#include <utility>

#include "Sources/audio_player/audio_player.h"
#include "suite/audio/audio_sample_content.h"

void AudioPlayer_AudioContentDeleter(void* player) {
  static_cast<AudioPlayer*>(player)->DeleteUnusedAudioContent();
}

void AudioPlayer::DeleteUnusedAudioContent() {
  std::deque<tesk_audio::AudioSampleContent*> unused;
  {
    exc::ScopeLock lock(*this);
    unused = contentsToDelete_;
    contentsToDelete_.clear();
  }
  for (const tesk_audio::AudioSampleContent* content : unused) delete content;
}
