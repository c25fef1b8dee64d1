#include "tests/stress/noise.h"

#include <iostream>
#include <regex>

#include "suite/core/log_sink.h"

namespace stress {

namespace {

std::string WithoutPlaces(const std::string& line) {
  static const std::regex kPath("[^ ]*/data/[^:]*:");
  static const std::regex kNumber("[0-9]+");
  return std::regex_replace(std::regex_replace(line, kPath, "FILE:"), kNumber, "N");
}

}  // namespace

Noise::Noise() : console_(this), before_(std::cout.rdbuf(&console_)) {
  tesk_log::SetSink([this](const std::string& line) { Count_(&logged_, line); });
}

Noise::~Noise() {
  tesk_log::SetSink(nullptr);
  std::cout.rdbuf(before_);
}

std::map<std::string, int> Noise::Logged() {
  const std::lock_guard lock(mutex_);
  return logged_;
}

std::map<std::string, int> Noise::Written() {
  const std::lock_guard lock(mutex_);
  return written_;
}

void Noise::Count_(std::map<std::string, int>* lines, const std::string& line) {
  const std::lock_guard lock(mutex_);
  ++(*lines)[WithoutPlaces(line)];
}

// The console stream is locked by whoever writes a line to it.
void Noise::Lines::Put_(char character) {
  if (character != '\n') {
    line_ += character;
    return;
  }
  noise_->Count_(&noise_->written_, line_);
  line_.clear();
}

Noise::Lines::int_type Noise::Lines::overflow(int_type character) {
  Put_(traits_type::to_char_type(character));
  return character;
}

std::streamsize Noise::Lines::xsputn(const char* text, std::streamsize count) {
  for (std::streamsize i = 0; i < count; ++i) Put_(text[i]);
  return count;
}

}  // namespace stress
