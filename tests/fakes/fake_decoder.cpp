#include "tests/fakes/fake_decoder.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <new>
#include <set>
#include <stdexcept>
#include <utility>

#include "suite/audio/create.h"
#include "suite/audio/errors.h"

namespace fakes::decoder {

namespace {

struct Failure {
  ErrorKind kind;
  std::string text;
};

std::mutex mutex;
std::condition_variable changed;
std::map<std::string, Failure> failures;
std::map<std::string, std::function<tesk_audio::AudioSampleContent*()>> contents;
std::set<std::string> held;
std::multiset<std::string> waiting;
std::vector<Call> calls;

[[noreturn]] void Throw(const Failure& failure) {
  switch (failure.kind) {
    case ErrorKind::OggVorbis:
      throw tesk_audio::OggVorbisDecodeError(failure.text);
    case ErrorKind::Content:
      throw tesk_audio::AudioSampleContentError(failure.text);
    case ErrorKind::Audio:
      throw tesk_audio::TESKAudioError(failure.text);
    case ErrorKind::Runtime:
      throw std::runtime_error(failure.text);
    case ErrorKind::OutOfMemory:
      throw std::bad_alloc();
    case ErrorKind::NotAnException:
      break;
  }
  throw 42;
}

}  // namespace

void Reset() {
  const std::lock_guard lock(mutex);
  failures.clear();
  contents.clear();
  held.clear();
  calls.clear();
  changed.notify_all();
}

void FailDecode(const std::string& path, ErrorKind kind, const std::string& text) {
  const std::lock_guard lock(mutex);
  failures.insert_or_assign(path, Failure{kind, text});
}

void DecodeAgain(const std::string& path) {
  const std::lock_guard lock(mutex);
  failures.erase(path);
}

void SetContent(const std::string& path, unsigned frames, double rateHz, unsigned channels) {
  SetContent(path, [=] { return new test_support::StaircaseContent(frames, rateHz, channels); });
}

void SetContent(const std::string& path, std::function<tesk_audio::AudioSampleContent*()> make) {
  const std::lock_guard lock(mutex);
  contents.insert_or_assign(path, std::move(make));
}

void HoldLoader(const std::string& path) {
  const std::lock_guard lock(mutex);
  held.insert(path);
}

void ReleaseLoader(const std::string& path) {
  const std::lock_guard lock(mutex);
  held.erase(path);
  changed.notify_all();
}

bool WaitUntilHeld(const std::string& path) {
  std::unique_lock lock(mutex);
  return changed.wait_for(lock, std::chrono::seconds(60), [&] { return waiting.count(path) != 0; });
}

std::vector<Call> GetCalls() {
  const std::lock_guard lock(mutex);
  return calls;
}

int CountCalls(const std::string& path) {
  const std::lock_guard lock(mutex);
  return static_cast<int>(
      std::count_if(calls.begin(), calls.end(), [&](const Call& call) { return call.path == path; }));
}

}  // namespace fakes::decoder

tesk_audio::AudioSampleContent* tesk_audio::CreateAudioSampleContent(const std::string& path,
                                                                     const std::string& argument) {
  namespace decoder = fakes::decoder;
  std::unique_lock lock(decoder::mutex);
  decoder::calls.push_back({path, argument});
  const auto place = decoder::waiting.insert(path);
  decoder::changed.notify_all();
  decoder::changed.wait(lock, [&] { return decoder::held.count(path) == 0; });
  decoder::waiting.erase(place);
  const auto failure = decoder::failures.find(path);
  if (failure != decoder::failures.end()) decoder::Throw(failure->second);
  const auto content = decoder::contents.find(path);
  return content != decoder::contents.end() ? content->second() : new test_support::StaircaseContent(1000);
}
