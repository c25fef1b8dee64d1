#pragma once

#include <functional>

// What a program has asked PulseAudio for last, so that a test can answer in its place.
struct FakePulse {
  using Answer = void (*)(void* context, const void* info, void* argument);
  using Ended = void (*)(void* operation, void* argument);

  bool refuses = false;                     // there is no operation
  std::function<void(const void*)> answer;  // null: the server has died while it was asked
  std::function<void()> end;                // it has been answered or cancelled
};

extern FakePulse fakePulse;
