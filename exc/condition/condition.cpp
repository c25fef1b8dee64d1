#include "exc/condition/condition.h"

namespace exc {

Condition::Condition() {
  pthread_cond_init(&condition_, nullptr);
}

Condition::~Condition() {
  pthread_cond_destroy(&condition_);
}

void Condition::SignalWhileLocked() {
  pthread_cond_signal(&condition_);
}

}  // namespace exc
