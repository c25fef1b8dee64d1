#include "tests/reference_suite/midi/show_folder/show_on_disk.h"

#include <fstream>
#include <stdexcept>

#include "reference_suite/midi/standard_midi_file/smf_writer.h"
#include "tests/support/temporary_folder.h"

namespace made_show {

namespace {

std::string BigEndian(std::uint32_t value, int bytes) {
  std::string text;
  for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) text += static_cast<char>(value >> shift);
  return text;
}

std::string Quantity(std::uint32_t value) {
  std::string text(1, static_cast<char>(value & 0x7F));
  for (value >>= 7; value != 0; value >>= 7)
    text.insert(text.begin(), static_cast<char>(0x80 | (value & 0x7F)));
  return text;
}

}  // namespace

ShowOnDisk::ShowOnDisk() {
  path_ = test_support::MakeTemporaryFolder();
  std::filesystem::create_directory(path_ / "songs");
}

ShowOnDisk::~ShowOnDisk() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void ShowOnDisk::Write(const std::string& file, const std::string& bytes) const {
  std::ofstream out(path_ / file, std::ios::binary);
  out << bytes;
  out.close();
  if (!out) throw std::runtime_error("not written: " + file);
}

void ShowOnDisk::WriteMidi(const std::string& file, unsigned bars) const {
  tesk_midi::SmfWriter writer(480);
  writer.Tempo(0, 500'000);
  writer.End(bars * 1920);
  const std::vector<std::uint8_t> bytes = writer.Bytes();
  Write(file, std::string(bytes.begin(), bytes.end()));
}

std::vector<std::string> ShowOnDisk::Problems() const {
  std::vector<tesk_midi::Problem> problems;
  try {
    problems = Load().warnings;
  } catch (const tesk_midi::ShowError& error) {
    problems = error.GetProblems();
  }
  std::vector<std::string> texts;
  for (const tesk_midi::Problem& problem : problems) {
    texts.push_back((problem.isWarning ? "warning: " : "") + tesk_midi::ToString(problem));
  }
  return texts;
}

MidiText& MidiText::Tempo(std::uint32_t tick, std::uint32_t microsecondsPerQuarter) {
  events_.push_back({tick, 0x51, BigEndian(microsecondsPerQuarter, 3)});
  return *this;
}

MidiText& MidiText::Meter(std::uint32_t tick, unsigned numerator, unsigned denominator) {
  char power = 0;
  while (1u << power < denominator) ++power;
  events_.push_back({tick, 0x58, {static_cast<char>(numerator), power, 24, 8}});
  return *this;
}

MidiText& MidiText::Marker(std::uint32_t tick, const std::string& text) {
  events_.push_back({tick, 0x06, text});
  return *this;
}

std::string MidiText::End(std::uint32_t tick, unsigned division) const {
  std::string track;
  std::uint32_t now = 0;
  const auto add = [&](const Event& event) {
    track += Quantity(event.tick - now) + '\xFF' + static_cast<char>(event.type) +
             Quantity(static_cast<std::uint32_t>(event.data.size())) + event.data;
    now = event.tick;
  };
  for (const Event& event : events_) add(event);
  add({tick, 0x2F, ""});
  return "MThd" + BigEndian(6, 4) + BigEndian(0, 2) + BigEndian(1, 2) + BigEndian(division, 2) + "MTrk" +
         BigEndian(static_cast<std::uint32_t>(track.size()), 4) + track;
}

std::vector<std::string> ProblemsOfToml(const std::string& toml) {
  const ShowOnDisk show;
  show.WriteMidi("songs/3 Waltz.mid");
  show.Write("songs/3 Waltz.toml", toml);
  std::vector<std::string> problems = show.Problems();
  const std::string file = "songs/3 Waltz.toml:";
  for (std::string& problem : problems) {
    if (problem.substr(0, file.size()) == file)
      problem.erase(0, problem[file.size()] == ' ' ? file.size() + 1 : file.size());
  }
  return problems;
}

Song SongOfToml(const std::string& toml) {
  const ShowOnDisk show;
  show.WriteMidi("songs/3 Waltz.mid");
  show.Write("songs/3 Waltz.toml", toml);
  return {show.Load()};
}

}  // namespace made_show
