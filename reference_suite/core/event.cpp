#include "suite/core/event.h"

namespace cmn {

void TESKEvent::WriteString(exc::CoutBuffer& out) const {
  WriteString(static_cast<std::ostream&>(out));
}

}  // namespace cmn
