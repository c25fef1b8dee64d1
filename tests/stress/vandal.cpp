#include "tests/stress/vandal.h"

#include <chrono>
#include <random>

#include "tests/stress/disk_calls.h"

namespace stress {

Vandal::Vandal(StressShow* show, unsigned seed, bool destroys)
    : show_(show), thread_([this, seed, destroys] { Run_(seed, destroys); }) {}

Vandal::~Vandal() {
  ends_ = true;
  thread_.join();
  disk::SetSlowness(0);
  disk::SetFailures(0);
}

void Vandal::Run_(unsigned seed, bool destroys) {
  std::mt19937 random(seed);
  while (!ends_) {
    const unsigned song = 1 + static_cast<unsigned>(random()) % show_->CountSongs();
    const unsigned what = static_cast<unsigned>(random()) % 8;
    if (destroys && random() % 2 == 0) {
      Destroy_(song, what, static_cast<unsigned>(random()) % 100);
    } else {
      Annoy_(song, what);
    }
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 2000));
  }
}

void Vandal::Annoy_(unsigned song, unsigned what) {
  switch (what) {
    case 0:
      disk::SetSlowness(0);
      break;
    case 1:
      disk::SetSlowness(200);
      break;
    case 2:
      disk::SetSlowness(3000);
      break;
    default:
      show_->Replace(song, what % 2 == 0);
  }
}

void Vandal::Destroy_(unsigned song, unsigned what, unsigned howMuch) {
  switch (what) {
    case 0:
      show_->Remove(song);
      break;
    case 1:
      show_->OverwriteInPlace(song);
      break;
    case 2:
      show_->ReplaceByOtherFormat(song);
      break;
    case 3:
      show_->ReplaceByFolder(song);
      break;
    case 4:
      disk::SetFailures(howMuch + 2);
      break;
    case 5:
      disk::SetFailures(0);
      break;
    default:
      show_->TruncateInPlace(song, howMuch / 100.0);
  }
}

}  // namespace stress
