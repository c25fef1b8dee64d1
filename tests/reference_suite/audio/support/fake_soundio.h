#pragma once

#include <soundio/soundio.h>

#include <atomic>
#include <deque>
#include <functional>
#include <string>
#include <vector>

// A sound system of the test's own: what there is to play to, and what it answers. fake_soundio.cpp takes the
// place of the library; one at a time.
class FakeSystem {
 public:
  // It is the one from now on.
  FakeSystem();
  ~FakeSystem();
  FakeSystem(const FakeSystem&) = delete;
  FakeSystem& operator=(const FakeSystem&) = delete;

  struct Output {
    std::string name;
    std::string id;
    SoundIoDevice device{};
  };
  void Add(const std::string& name, const std::string& id);
  // The system's thread asks for frames.
  void Ask(int frames) { stream.write_callback(&stream, 0, frames); }

  std::deque<Output> outputs;
  int usual = 0;
  std::atomic<bool> isBare{false};  // all outputs have been unplugged
  bool dies = false;                // while it is asked what there is
  bool asksToTheLast = false;       // also while the stream is being closed
  int beginError = 0;
  int endError = 0;
  SoundIo soundio{};
  SoundIoOutStream stream{};
  SoundIoChannelLayout layout{};
  std::vector<float> written;  // of two outputs
  SoundIoChannelArea areas[2]{};
  std::string opened;
  // What a system does with a thread of its own; may be empty.
  std::function<void()> onStart;
  std::function<void()> onDestroy;
};
