#include "suite/utility/thread_names.h"

#include <pthread.h>

#include <cstddef>

namespace exc {

namespace {

constexpr std::size_t kSystemNameSize = 15;  // bytes; the system refuses longer names

thread_local std::string nameOfThisThread;

}  // namespace

constinit ThreadNames thread_names;

void ThreadNames::SetNameOfCurrentThread(const std::string& name) {
  nameOfThisThread = name;
  // A name that the system does not take is not worth an error: it is for debugging.
  pthread_setname_np(pthread_self(), name.substr(0, kSystemNameSize).c_str());
}

std::string ThreadNames::GetNameOfCurrentThread() const {
  return nameOfThisThread;
}

}  // namespace exc
