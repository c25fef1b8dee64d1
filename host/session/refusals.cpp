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

// Every other error of the show has a class of its own.
bool IsRefusalOfTheMoment(const std::exception& error) {
  return IsMemory(error) || typeid(error) == typeid(std::runtime_error) ||
         typeid(error) == typeid(tesk_audio::TESKAudioError) ||
         dynamic_cast<const std::system_error*>(&error) != nullptr;
}

bool IsRefusalOfAThread(const std::exception& error) {
  return IsRefusalOfTheMoment(error) && !IsMemory(error);
}

std::string WhatWasRefused(const std::exception& error) {
  if (IsMemory(error)) return "there is not enough memory";
  return WithoutFullStop(error.what());
}

}  // namespace orbel::host
