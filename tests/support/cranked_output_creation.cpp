// Stands alone: it takes the place of the audio library's object of the same symbol.
#include <mutex>
#include <optional>
#include <utility>

#include "suite/audio/create.h"
#include "suite/audio/errors.h"
#include "tests/support/cranked_output.h"

namespace test_support::cranked {

namespace {

std::mutex mutex;
CrankedOutput* output = nullptr;
int created = 0;
std::optional<std::string> failure;
std::function<void()> hook;

// Takes itself off the books when it goes.
class BookedOutput : public CrankedOutput {
 public:
  using CrankedOutput::CrankedOutput;
  ~BookedOutput() override {
    const std::lock_guard lock(mutex);
    output = nullptr;
  }
};

}  // namespace

void Reset() {
  const std::lock_guard lock(mutex);
  created = 0;
  failure.reset();
  hook = nullptr;
}

CrankedOutput* Get() {
  const std::lock_guard lock(mutex);
  return output;
}

int CountCreated() {
  const std::lock_guard lock(mutex);
  return created;
}

void FailCreate(const std::string& text) {
  const std::lock_guard lock(mutex);
  failure = text;
}

void OnCreate(std::function<void()> onCreate) {
  const std::lock_guard lock(mutex);
  hook = std::move(onCreate);
}

}  // namespace test_support::cranked

tesk_audio::AudioSampleOutput* tesk_audio::CreateAudioSampleOutput(
    const tesk_audio::AudioSampleContent& content, tesk_audio::AudioPlayerOutputInterface& player) {
  namespace cranked = test_support::cranked;
  std::function<void()> hook;
  {
    const std::lock_guard lock(cranked::mutex);
    hook = cranked::hook;
    if (cranked::failure) throw tesk_audio::TESKAudioError(*cranked::failure);
  }
  if (hook) hook();
  const std::lock_guard lock(cranked::mutex);
  ++cranked::created;
  return cranked::output = new cranked::BookedOutput(content, player);
}
