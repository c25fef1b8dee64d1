#pragma once

#include <string>
#include <utility>
#include <vector>

#include "reference_suite/midi/show_folder/shown_text.h"
#include "reference_suite/midi/toml/toml_node.h"
#include "suite/midi/load_show.h"

namespace tesk_midi {

// Adds the problems of one file to a list that collects those of the whole show.
class FileProblems {
 public:
  // `file`: relative to the show folder, as the system names it. `songNumber`: empty for no song's file.
  FileProblems(const std::string& file, std::string songNumber, std::vector<Problem>* problems)
      : file_(ShownText(file)), songNumber_(std::move(songNumber)), problems_(problems) {}

  const std::string& GetShownFile() const { return file_; }

  void Error(TextPlace place, const std::string& message) { Add_(place, message, false); }
  void Error(const std::string& message) { Add_({}, message, false); }
  void Warn(const std::string& message) { Add_({}, message, true); }

  // How many errors this object has added.
  int GetErrorCount() const { return errorCount_; }

 private:
  void Add_(TextPlace place, const std::string& message, bool isWarning) {
    problems_->push_back({file_, place.line, place.column, songNumber_, message, isWarning});
    errorCount_ += isWarning ? 0 : 1;
  }

  std::string file_;
  std::string songNumber_;
  std::vector<Problem>* problems_;
  int errorCount_ = 0;
};

}  // namespace tesk_midi
