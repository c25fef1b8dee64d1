#include "reference_suite/audio/decode/decoding_places.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <mutex>
#include <thread>
#include <vector>

namespace tesk_audio {

namespace {

constexpr int kMoreNice = 5;
constexpr int kMoreNiceWhenLate = 15;
constexpr int kNicest = 19;

// All that decode now.
struct Decodings {
  std::mutex lock;
  std::vector<DecodingPlaces*> all;
};

Decodings& Now() {
  static Decodings decodings;
  return decodings;
}

}  // namespace

int CoreCount() {
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

long DecodingPlaces::NumberOfThisThread() {
  return ::syscall(SYS_gettid);
}

DecodingPlaces::DecodingPlaces(int cores, long order)
    : order_(order), ownNiceValue_(::getpriority(PRIO_PROCESS, 0)) {
  Decodings& decodings = Now();
  const std::lock_guard<std::mutex> lock(decodings.lock);
  decodings.all.reserve(decodings.all.size() + 1);
  int earlier = 0;
  int later = 0;
  for (DecodingPlaces* const other : decodings.all) {
    if (other->order_ <= order_) {
      earlier += other->count_;
    } else if (other->claimed_) {
      later += other->count_;
    } else {
      other->count_ = 1;
    }
  }
  count_ = std::max(1, cores - earlier - later);
  isLate_ = earlier >= cores;
  for (DecodingPlaces* const other : decodings.all) {
    if (other->order_ > order_ && earlier + count_ >= cores) other->isLate_ = true;
  }
  decodings.all.push_back(this);
}

DecodingPlaces::~DecodingPlaces() {
  Decodings& decodings = Now();
  const std::lock_guard<std::mutex> lock(decodings.lock);
  decodings.all.erase(std::find(decodings.all.begin(), decodings.all.end(), this));
}

int DecodingPlaces::Claim() {
  const std::lock_guard<std::mutex> lock(Now().lock);
  claimed_ = true;
  return count_;
}

void DecodingPlaces::Keep(int count) {
  const std::lock_guard<std::mutex> lock(Now().lock);
  count_ = std::min(count_, count);
}

int DecodingPlaces::NiceValue() const {
  return std::min(kNicest, ownNiceValue_ + (isLate_ ? kMoreNiceWhenLate : kMoreNice));
}

}  // namespace tesk_audio
