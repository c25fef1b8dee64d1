#pragma once

#include "tests/reference_suite/audio/support/scripted_player.h"

// Counts how often a stretcher is given frames.
class CountingPlayer : public ScriptedPlayer {
 public:
  using ScriptedPlayer::ScriptedPlayer;
  long long ReadSamplesAt(long long index, long long* ioCount, void* buffer) override {
    ++chunks;
    return ScriptedPlayer::ReadSamplesAt(index, ioCount, buffer);
  }
  int chunks = 0;
};
