#include "exc/flag/ex_scope_flag.h"

namespace exc {

ExScopeFlag::ExScopeFlag(ExFlag& flag) : flag_(flag) {
  flag_.Set();
}

ExScopeFlag::ExScopeFlag(ExFlag& flag, const std::string& reason) : flag_(flag) {
  flag_.Set(reason);
}

ExScopeFlag::~ExScopeFlag() {
  ExScopeFlag::Cancel();
}

void ExScopeFlag::Cancel() {
  if (flag_.GetIsSet()) flag_.Cancel();
}

}  // namespace exc
