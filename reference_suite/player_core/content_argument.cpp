#include "suite/player_core/content_argument.h"

#include "exc/lock/lockable.h"
#include "exc/lock/scope_lock.h"

namespace player_core {

namespace {

class Argument : public exc::Lockable {
 public:
  Argument() : Lockable("ContentArgument") {}

  void Set(const std::string& argument) {
    exc::ScopeLock lock(*this);
    argument_ = argument;
  }
  std::string Get() {
    exc::ScopeLock lock(*this);
    return argument_;
  }

 private:
  std::string argument_ EXC_GUARDED_BY(this);
};

Argument& TheArgument() {
  static Argument argument;
  return argument;
}

}  // namespace

void SetContentArgument(const std::string& argument) {
  TheArgument().Set(argument);
}

std::string GetContentArgument() {
  return TheArgument().Get();
}

}  // namespace player_core
