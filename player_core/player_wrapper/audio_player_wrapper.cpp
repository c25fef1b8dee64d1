#include "player_core/player_wrapper/audio_player_wrapper.h"

#include <utility>

#include "suite/player_core/errors.h"
#include "suite/utility/format.h"

namespace {

// The version of show data that this player asks the base for.
constexpr long kVersionTarget = 2;

}  // namespace

AudioPlayerWrapper::AudioPlayerWrapper(const std::string& showPath, const std::string& leaveOut)
    : PlayerWrapper(showPath, leaveOut) {
  SetVersionTarget(kVersionTarget);
  SetUp();
  ShowDataFiles files = ListShowDataFiles(showPath_);
  songNamesByNumber_ = std::move(files.songNames);
  dataFilesByNumber_ = std::move(files.fileNames);
  RequireMidiDataForEverySong_();

  const ShowDataFiles::ByNumber playable = GetPlayableFiles_();
  if (playable.empty()) throw PlayerWrapperError(WhyNothingCanBePlayed_());
  player_ = std::make_unique<AudioPlayer>(showPath_, GetShowData(), changeLog_.get(), playable);
  GetPlayer()->LoadSong(playable.begin()->first);
}

std::string AudioPlayerWrapper::WhyNothingCanBePlayed_() const {
  const std::string folder = GetDataFolder(showPath_);
  if (dataFilesByNumber_.empty()) {
    return exc::format(
        "No playable audio found in \"%s\": put each song's audio there, named \"NUMBER NAME.obd\".",
        folder.c_str());
  }
  std::string why = exc::format("None of the audio in \"%s\" can be played.", folder.c_str());
  for (const tesk_midi::Problem& problem : GetProblems()) {
    if (!problem.isWarning) why += "\n" + tesk_midi::ToString(problem);
  }
  return why;
}

// The player goes last, and is no longer handed out while it goes.
AudioPlayerWrapper::~AudioPlayerWrapper() {
  dataFilesByNumber_.clear();
  songNamesByNumber_.clear();
  player_.reset();
}

std::map<std::string, std::string, exc::NumericStringCompare> AudioPlayerWrapper::GetSongNames() {
  return songNamesByNumber_;
}

AudioPlayer* AudioPlayerWrapper::GetPlayer() {
  return player_.get();
}

void AudioPlayerWrapper::RequireMidiDataForEverySong_() {
  const auto songs = GetShowData().GetSongNamesBySongNumber();  // a copy, so it is asked for only once
  for (const auto& [number, file] : dataFilesByNumber_) {
    if (songs.count(number) == 0) {
      throw MP3NoMatchError("No midi data found for song number " + number);
    }
  }
}

// Without the songs that are left out: a loader must not meet a file that cannot be decoded, for its error
// would stay with the player for good.
ShowDataFiles::ByNumber AudioPlayerWrapper::GetPlayableFiles_() {
  ShowDataFiles::ByNumber playable = dataFilesByNumber_;
  for (const auto& [number, file] : dataFilesByNumber_) {
    if (GetShowData().IsLeftOut(number)) playable.erase(number);
  }
  return playable;
}
