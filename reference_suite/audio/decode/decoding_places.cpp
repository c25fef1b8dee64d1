#include "reference_suite/audio/decode/decoding_places.h"

#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace tesk_audio {

namespace {

std::atomic<int> taken{0};

constexpr int kMoreNice = 5;
constexpr int kMoreNiceWhenLate = 15;
constexpr int kNicest = 19;

}  // namespace

int CoreCount() {
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

DecodingPlaces::DecodingPlaces(int cores) {
  int before = taken.load();
  do {
    count_ = std::max(1, cores - before);
  } while (!taken.compare_exchange_weak(before, before + count_));
  const int more = before >= cores ? kMoreNiceWhenLate : kMoreNice;
  niceValue_ = std::min(kNicest, ::getpriority(PRIO_PROCESS, 0) + more);
}

DecodingPlaces::~DecodingPlaces() {
  taken -= count_;
}

void DecodingPlaces::Keep(int count) {
  if (count >= count_) return;
  taken -= count_ - count;
  count_ = count;
}

}  // namespace tesk_audio
