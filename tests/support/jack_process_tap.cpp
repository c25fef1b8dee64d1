// Stands before the library's function that takes the process callback.
#include "tests/support/jack_process_tap.h"

#include <dlfcn.h>

#include <deque>
#include <mutex>

#include "reference_suite/audio/device/uncancelled.h"

namespace {

struct Tapped {
  jack_client_t* client;
  JackProcessCallback call;
  void* argument;
  test_support::JackProcessTap* tap;
};

std::mutex mutex;
// As long as the program: a client that hangs may be closed when nobody waits for it any more.
std::deque<Tapped>& all = *new std::deque<Tapped>;
test_support::JackProcessTap* theTap = nullptr;

}  // namespace

namespace test_support {

void SetJackProcessTap(JackProcessTap* tap) {
  const std::lock_guard lock(mutex);
  theTap = tap;
}

}  // namespace test_support

extern "C" int jack_set_process_callback(jack_client_t* client, JackProcessCallback call, void* argument) {
  using Set = int (*)(jack_client_t*, JackProcessCallback, void*);
  static const auto next = reinterpret_cast<Set>(::dlsym(RTLD_NEXT, "jack_set_process_callback"));
  const std::lock_guard lock(mutex);
  if (theTap == nullptr) return next(client, call, argument);
  all.push_back({client, call, argument, theTap});
  return next(
      client,
      [](jack_nframes_t frames, void* tapped) {
        int result = 0;
        tesk_audio::RunUncancelled([&]() noexcept {
          const Tapped& one = *static_cast<Tapped*>(tapped);
          result = one.tap->Process(one.client, frames, one.call, one.argument);
        });
        return result;
      },
      &all.back());
}
