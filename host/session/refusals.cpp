#include "host/session/refusals.h"

#include <new>
#include <stdexcept>
#include <system_error>
#include <typeinfo>

#include "host/session/shown_text.h"
#include "suite/audio/errors.h"

namespace orbel::host {
namespace {

bool IsMemory(const std::exception& error) {
  return dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
}

}  // namespace

// Every other error of the show has a class of its own, and so has a sound file that cannot be written: what
// keeps it from that does not pass.
bool IsRefusalOfTheMoment(const std::exception& error) {
  return IsMemory(error) || typeid(error) == typeid(std::runtime_error) ||
         typeid(error) == typeid(tesk_audio::TESKAudioError) ||
         dynamic_cast<const std::system_error*>(&error) != nullptr;
}

bool IsRefusalOfAThread(const std::exception& error) {
  return IsRefusalOfTheMoment(error) && !IsMemory(error);
}

std::string InWords(const std::exception& error) {
  return IsMemory(error) ? "there is not enough memory; close other programs" : error.what();
}

std::string WhatWasRefused(const std::exception& error) {
  if (IsMemory(error)) return "there is not enough memory";
  return WithoutFullStop(error.what());
}

std::string WhyNotPlayed(const std::exception& error) {
  const std::string cure = ". Close other programs";
  std::string what = WhatWasRefused(error);
  if (what.ends_with(cure)) what.resize(what.size() - cure.size());  // some say so themselves
  return "the system refuses what playing needs: " + what + cure + " and open the show again.";
}

}  // namespace orbel::host
