#pragma once

#include <jack/jack.h>

namespace test_support {

// Stands in for the process callback that a client of this program has given to JACK's library. The program
// must link jack_process_tap.cpp and libdl.
class JackProcessTap {
 public:
  virtual ~JackProcessTap() = default;
  // On the client's process thread. Runs `call`, and returns what that returns.
  virtual int Process(jack_client_t* client, jack_nframes_t frames, JackProcessCallback call,
                      void* argument) = 0;
};

// For every client that sets its callback from now on; null: none.
void SetJackProcessTap(JackProcessTap* tap);

}  // namespace test_support
