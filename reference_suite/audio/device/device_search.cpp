#include "reference_suite/audio/device/device_search.h"

#include <pthread.h>

#include <atomic>

#include "reference_suite/audio/device/device_clock.h"
#include "reference_suite/audio/device/rate_bridge.h"
#include "reference_suite/audio/device/start_thread.h"
#include "reference_suite/audio/output/monotonic_now.h"
#include "suite/utility/thread_names.h"

namespace tesk_audio {

namespace {

constexpr long long kMillisecond = 1'000'000;
constexpr int kLooksBetweenTries = 50;
constexpr long long kLook = 20 * kMillisecond;

struct Closing {
  RunningDevice running;
  std::atomic<bool> done{false};
};

void* CloseBody(void* argument) {
  const std::unique_ptr<std::shared_ptr<Closing>> owned(static_cast<std::shared_ptr<Closing>*>(argument));
  exc::thread_names.SetNameOfCurrentThread("DeviceClosing");
  Closing& closing = **owned;
  closing.running.device->Stop();
  closing.running.device.reset();
  closing.done = true;
  return nullptr;
}

}  // namespace

struct DeviceSearch::State {
  Wanted wanted;
  std::atomic<bool> abandoned{false};
  std::atomic<long long> triesSince{0};  // 0: no try is under way
  mutable std::mutex mutex;
  RunningDevice found;  // both guarded by it
  std::string error;

  RunningDevice Try() {
    struct UnderWay {
      explicit UnderWay(State& owner) : state(owner) {
        ++*state.wanted.tries;
        state.triesSince = MonotonicNow();
      }
      ~UnderWay() {
        state.triesSince = 0;
        --*state.wanted.tries;
      }
      State& state;
    };
    const UnderWay underWay(*this);
    return Open();
  }

  RunningDevice Open() const {
    RunningDevice running;
    std::unique_ptr<Device> device = wanted.source();
    if (device->GetRateHz() != wanted.rateHz) {
      device = std::make_unique<RateBridge>(std::move(device), wanted.rateHz);
    }
    running.gate = std::make_unique<DeviceGate>(*wanted.target, wanted.channels, wanted.rateHz, device.get());
    running.device = std::move(device);
    running.device->Start(*running.gate);
    return running;
  }

  bool HandOver(RunningDevice* running) {
    const std::lock_guard lock(mutex);
    if (abandoned) return false;
    found = std::move(*running);
    return true;
  }

  void Search() {
    while (!abandoned) {
      try {
        RunningDevice running = Try();
        // Its thread must have ended before it is taken apart.
        if (!HandOver(&running)) running.device->Stop();
        return;
      } catch (const std::exception& failure) {
        const std::lock_guard lock(mutex);
        error = failure.what();
      }
      for (int i = 0; i < kLooksBetweenTries && !abandoned; ++i) SleepFor(kLook);
    }
  }
};

DeviceSearch::DeviceSearch(Wanted wanted) : state_(std::make_shared<State>()) {
  state_->wanted = std::move(wanted);
  auto argument = std::make_unique<std::shared_ptr<State>>(state_);
  // The argument belongs to the thread.
  ::pthread_detach(StartThread(&DeviceSearch::ThreadBody_, argument.get(), "The search for an audio device"));
  static_cast<void>(argument.release());
}

DeviceSearch::~DeviceSearch() {
  // With the lock held: either the thread sees it, or what it has found lies there already.
  RunningDevice found;
  {
    const std::lock_guard lock(state_->mutex);
    state_->abandoned = true;
    std::swap(found, state_->found);
  }
  if (found.device != nullptr) CloseDevice(std::move(found), 0);
}

void* DeviceSearch::ThreadBody_(void* state) {
  const std::unique_ptr<std::shared_ptr<State>> owned(static_cast<std::shared_ptr<State>*>(state));
  exc::thread_names.SetNameOfCurrentThread("DeviceSearch");
  (*owned)->Search();
  return nullptr;
}

RunningDevice DeviceSearch::Take() {
  RunningDevice taken;
  const std::lock_guard lock(state_->mutex);
  std::swap(taken, state_->found);
  return taken;
}

std::string DeviceSearch::GetError() const {
  const std::lock_guard lock(state_->mutex);
  return state_->error;
}

bool DeviceSearch::Hangs(long long patience) const {
  const long long since = state_->triesSince;
  return since != 0 && MonotonicNow() - since > patience;
}

void CloseDevice(RunningDevice running, long long patience) noexcept {
  std::shared_ptr<Closing> closing;
  try {
    closing = std::make_shared<Closing>();
    auto argument = std::make_unique<std::shared_ptr<Closing>>(closing);
    closing->running = std::move(running);
    ::pthread_detach(StartThread(&CloseBody, argument.get(), "The closing of an audio device"));
    static_cast<void>(argument.release());
  } catch (const std::exception&) {
    // Without a thread or memory it is left open for ever, which is better than to wait for it here.
    RunningDevice& left = closing != nullptr && running.device == nullptr ? closing->running : running;
    static_cast<void>(left.device.release());
    static_cast<void>(left.gate.release());
    return;
  }
  const long long deadline = MonotonicNow() + patience;
  while (!closing->done && MonotonicNow() < deadline) SleepFor(kMillisecond);
}

}  // namespace tesk_audio
