#include "host/demo/score/phrase.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

namespace orbel::host::demo {

namespace {

constexpr int kAccent = 14;
constexpr double kUsualGate = 0.9;

[[noreturn]] void Reject(std::string_view word) {
  throw std::logic_error("\"" + std::string(word) + "\" is no note, chord or rest");
}

std::vector<std::string_view> SplitAt(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    if (end != 0) pieces.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return pieces;
}

// Digits with at most one point: the same in every locale.
double Quarters(std::string_view text, std::string_view word) {
  double value = 0.0;
  double unit = 1.0;
  bool behindPoint = false;
  for (const char letter : text) {
    if (letter == '.' && !behindPoint) {
      behindPoint = true;
    } else if (letter >= '0' && letter <= '9') {
      value = value * 10.0 + (letter - '0');
      if (behindPoint) unit *= 10.0;
    } else {
      Reject(word);
    }
  }
  if (value == 0.0) Reject(word);
  return value / unit;
}

struct Word {
  std::vector<int> keys;  // none for a rest
  double quarters = 0.0;
  double gate = kUsualGate;
  int louder = 0;
};

Word Parse(std::string_view word) {
  Word result;
  std::string_view length = word;
  const std::size_t colon = word.find(':');
  if (colon == std::string_view::npos) Reject(word);
  length.remove_prefix(colon + 1);
  for (; !length.empty(); length.remove_suffix(1)) {
    const char mark = length.back();
    if (mark == '\'') {
      result.gate = 0.5;
    } else if (mark == '_') {
      result.gate = 1.0;
    } else if (mark == '>') {
      result.louder = kAccent;
    } else if (mark == '<') {
      result.louder = -kAccent;
    } else {
      break;
    }
  }
  result.quarters = Quarters(length, word);
  const std::string_view pitches = word.substr(0, colon);
  if (pitches == "-") return result;
  for (const std::string_view pitch : SplitAt(pitches, '+')) result.keys.push_back(KeyOf(pitch));
  if (result.keys.empty()) Reject(word);
  return result;
}

Tick Ticks(const Score& score, double quarters) {
  return static_cast<Tick>(std::lround(quarters * score.Division()));
}

void RequireBarLine(const Score& score, Tick tick, std::string_view phrase) {
  if (score.IsBarLine(tick)) return;
  throw std::logic_error(score.Title() + ": no bar line at tick " + std::to_string(tick) + " of \"" +
                         std::string(phrase) + "\"");
}

void Write(Part& part, Tick tick, Tick length, int key, int velocity) {
  part.notes.push_back({tick, std::max<Tick>(length, 1), key, std::clamp(velocity, 1, 127)});
}

}  // namespace

int KeyOf(std::string_view pitch) {
  constexpr std::string_view kLetters = "C.D.EF.G.A.B";
  if (pitch.size() < 2 || pitch.front() == '.') Reject(pitch);
  const std::size_t step = kLetters.find(pitch.front());
  const char octave = pitch.back();
  const std::string_view accidental = pitch.substr(1, pitch.size() - 2);
  const bool known = accidental.empty() || accidental == "#" || accidental == "b";
  if (step == std::string_view::npos || octave < '0' || octave > '8' || !known) Reject(pitch);
  const int shift = accidental.empty() ? 0 : (accidental == "#" ? 1 : -1);
  return 12 * (octave - '0' + 1) + static_cast<int>(step) + shift;
}

Tick Play(Part& part, const Score& score, Tick start, std::string_view phrase, int velocity) {
  // Positions are counted from the start, so that triplets do not drift.
  double quarters = 0.0;
  for (const std::string_view text : SplitAt(phrase, ' ')) {
    const Tick tick = start + Ticks(score, quarters);
    if (text == "|") {
      RequireBarLine(score, tick, phrase);
      continue;
    }
    const Word word = Parse(text);
    for (const int key : word.keys) {
      Write(part, tick, Ticks(score, word.quarters * word.gate), key, velocity + word.louder);
    }
    quarters += word.quarters;
  }
  return start + Ticks(score, quarters);
}

Tick Beat(Part& part, const Score& score, Tick start, int key, std::string_view rhythm, double step,
          int velocity) {
  double quarters = 0.0;
  for (const char hit : rhythm) {
    const Tick tick = start + Ticks(score, quarters);
    const Tick length = Ticks(score, step * kUsualGate);
    if (hit == 'X') Write(part, tick, length, key, velocity + kAccent);
    if (hit == 'x') Write(part, tick, length, key, velocity);
    if (hit == 'o') Write(part, tick, length, key, velocity - kAccent);
    if (std::string_view("Xxo.").find(hit) == std::string_view::npos) Reject(rhythm);
    quarters += step;
  }
  return start + Ticks(score, quarters);
}

}  // namespace orbel::host::demo
