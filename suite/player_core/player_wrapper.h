#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "suite/midi/change_log.h"
#include "suite/midi/load_show.h"
#include "suite/midi/show_data.h"
#include "suite/utility/numeric_string_compare.h"

class Player;

// Opens a show folder: loads its data, examines its audio files, and holds both for the player that a derived
// class builds. Threads: HOST.
class PlayerWrapper {
 public:
  // `showPath`: the show folder. `leaveOut`: numbers of songs that are to be left out, separated by commas;
  // empty for none.
  PlayerWrapper(const std::string& showPath, const std::string& leaveOut);
  virtual ~PlayerWrapper();
  PlayerWrapper(const PlayerWrapper&) = delete;
  PlayerWrapper& operator=(const PlayerWrapper&) = delete;

  // The scores that belong to the show, packed; ours have none.
  virtual std::string GetScoreTar();
  virtual std::map<std::string, std::string, exc::NumericStringCompare> GetSongNames() = 0;
  // The words for what a performer can ask for.
  virtual std::vector<std::string> GetCommandNames();
  virtual void SetMidiSource(int source);
  virtual bool GetHasConductBeat();
  virtual void LoadChangeLogEditor();
  // Reads show.toml and songs/. Throws tesk_midi::ShowError.
  virtual void LoadShowData();
  // Not owned by the caller.
  virtual Player* GetPlayer() = 0;

  void SetVersionTarget(long version) { versionTarget_ = version; }
  long GetVersionTarget() const { return versionTarget_; }
  // LoadShowData, then the header and the end of every audio file: songs whose audio cannot be decoded are
  // left out of the running order, and a problem tells why.
  void SetUp();

  // Throws exc::ExAssertionError while there is none.
  tesk_midi::ShowData& GetShowData();
  const std::string& GetShowPath() const { return showPath_; }
  // What SetUp found: errors of songs that are left out, and warnings.
  const std::vector<tesk_midi::Problem>& GetProblems() const { return problems_; }

 protected:
  const std::string showPath_;
  const std::string leaveOut_;
  long versionTarget_ = 0;
  std::unique_ptr<tesk_midi::ShowData> showData_;
  std::unique_ptr<CL::ChangeLog> changeLog_;
  std::vector<tesk_midi::Problem> problems_;
};
