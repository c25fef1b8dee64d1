#include <utility>

#include "Sources/audio_player/audio_player.h"
#include "suite/audio/audio_sample_output.h"

AudioPlayer::AudioPlayer(const std::string& showPath, tesk_midi::ShowData& showData, CL::ChangeLog* changeLog,
                         SongAudioFiles songAudioFiles)
    : Player(showPath),
      guiUpdate_(*this, [this](unsigned* tick) { return GetAudibleTickIndex(tick); }),
      showControl_(Player::GetActiveSongNumberRef(), showData, changeLog, samplesTicksConverter_, guiUpdate_,
                   GetTransients(), [this] { return SeekToCaesuraStop_(); }),
      songAudioFiles_(std::move(songAudioFiles)),
      waitForAudio_("AudioPlayer_WaitForAudio"),
      playerIsResetting_("AudioPlayer_PlayerIsResetting"),
      fileLoaderIsFinishing_("AudioPlayer_FileLoaderIsFinishing") {
  ConnectPlay([this] { Play(); });
  guiUpdate_.StartUpdateGenerator();
  deleterThreadData_.reset(
      StartAudioContentDeleterThread(AudioPlayer_AudioContentDeleter, this, &deleterThread_));
}
