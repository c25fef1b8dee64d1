#include "host/session/script.h"

#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string_view>

#include "host/session/failure.h"
#include "host/session/shown_text.h"

namespace orbel::host {
namespace {

enum class Operand { None, Scale, Semitones, Position };

struct Word {
  std::string_view text;
  CommandKind kind;
  Operand operand;
};

constexpr std::array<Word, 17> kWords{{
    {"go", CommandKind::Go, Operand::None},
    {"again", CommandKind::Again, Operand::None},
    {"next", CommandKind::Next, Operand::None},
    {"previous", CommandKind::Previous, Operand::None},
    {"pause", CommandKind::Pause, Operand::None},
    {"play", CommandKind::Play, Operand::None},
    {"stop", CommandKind::Stop, Operand::None},
    {"left", CommandKind::Left, Operand::None},
    {"right", CommandKind::Right, Operand::None},
    {"seek", CommandKind::Seek, Operand::Position},
    {"tempo", CommandKind::Tempo, Operand::Scale},
    {"transpose", CommandKind::Transpose, Operand::Semitones},
    {"faster", CommandKind::Faster, Operand::None},
    {"slower", CommandKind::Slower, Operand::None},
    {"higher", CommandKind::Higher, Operand::None},
    {"lower", CommandKind::Lower, Operand::None},
    {"as-written", CommandKind::AsWritten, Operand::None},
}};

constexpr char kCommands[] =
    "go, again, next, previous, pause, play, stop, left, right, seek POSITION, tempo SCALE, transpose "
    "SEMITONES, faster, slower, higher, lower or as-written";

// The words of one line, taken from the left; every complaint names the line.
class LineReader {
 public:
  LineReader(const std::string& name, int line, const std::string& text)
      : place_(Shown(name) + ":" + std::to_string(line) + ": "),
        line_(line),
        words_(text.substr(0, text.find('#'))) {}

  bool AtEnd() { return (words_ >> std::ws).eof(); }

  ScriptLine Read() {
    ScriptLine result;
    result.line = line_;
    ReadMoment_(&result);
    result.command = ReadCommand_();
    if (!AtEnd()) Refuse_(Next_(""), "nothing more on this line");
    return result;
  }

 private:
  [[noreturn]] void Refuse_(const std::string& found, const std::string& expected) const {
    const std::string what = found.empty() ? "the line ends" : "found \"" + ShownInShort(found) + "\"";
    throw Failure(place_ + what + ", expected " + expected);
  }

  std::string Next_(const std::string& expected) {
    std::string word;
    if (!(words_ >> word)) Refuse_("", expected);
    return word;
  }

  template <typename Number>
  Number ReadNumber_(Number least, Number most, const std::string& expected) {
    const std::string word = Next_(expected);
    Number value{};
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    const bool good =
        error == std::errc() && end == word.data() + word.size() && value >= least && value <= most;
    if (!good) Refuse_(word, expected);
    return value;
  }

  void ReadMoment_(ScriptLine* out) {
    const std::string expected =
        "when: \"at POSITION\", \"at POSITION pass N\", \"waiting\" or \"time SECONDS\"";
    const std::string word = Next_(expected);
    if (word == "at") {
      out->moment = MomentKind::At;
      out->position = Next_("a position, for instance 9.1");
    } else if (word == "waiting") {
      out->moment = MomentKind::Waiting;
    } else if (word == "time") {
      out->moment = MomentKind::Time;
      out->seconds = ReadNumber_(0.0, 1e7, "seconds of output, for instance 12.500");
    } else {
      Refuse_(word, expected);
    }
    if (out->moment == MomentKind::At && Peek_() == "pass") {
      Next_("");
      out->pass = ReadNumber_(1, 1'000'000, "a number of passes from 1 on");
    }
  }

  std::string Peek_() {
    const std::streampos here = words_.tellg();
    std::string word;
    words_ >> word;
    words_.clear();
    words_.seekg(here);
    return word;
  }

  Command ReadCommand_() {
    const std::string expected = std::string("a command: ") + kCommands;
    const std::string text = Next_(expected);
    for (const Word& word : kWords) {
      if (word.text == text) return ReadOperand_(word);
    }
    Refuse_(text, expected);
  }

  Command ReadOperand_(const Word& word) {
    Command command;
    command.kind = word.kind;
    if (word.operand == Operand::Scale)
      command.number = ReadNumber_(kSlowestTempo, kFastestTempo, "a tempo scale from 0.25 to 4");
    if (word.operand == Operand::Semitones)
      command.number = ReadNumber_(-kMostSemitones, kMostSemitones, "semitones from -24 to 24");
    if (word.operand == Operand::Position) command.position = Next_("a position, for instance 9.1");
    return command;
  }

  std::string place_;
  int line_;
  std::istringstream words_;
};

}  // namespace

std::string ToString(const Command& command) {
  for (const Word& word : kWords) {
    if (word.kind != command.kind) continue;
    std::string text(word.text);
    if (word.operand == Operand::Position) text += " " + command.position;
    if (word.operand == Operand::Scale || word.operand == Operand::Semitones)
      text += " " + ShortNumber(command.number);
    return text;
  }
  return "";
}

std::vector<ScriptLine> ReadScript(std::istream& in, const std::string& name) {
  std::vector<ScriptLine> lines;
  std::string text;
  for (int line = 1; std::getline(in, text); ++line) {
    LineReader reader(name, line, text);
    if (!reader.AtEnd()) lines.push_back(reader.Read());
  }
  return lines;
}

std::vector<ScriptLine> ReadScriptFile(const std::string& path) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  // A folder would read as an empty script; a pipe or a device might never end, or never begin.
  const bool isNothing = std::filesystem::canonical(path, error) == "/dev/null";
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status) && !isNothing) {
    throw Failure(Shown(path) + ": is a folder, a pipe or a device; give the path of a script");
  }
  std::ifstream in(path);
  if (!in) throw Failure(Shown(path) + ": cannot be read; give the path of a script");
  return ReadScript(in, path);
}

}  // namespace orbel::host
