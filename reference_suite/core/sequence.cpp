#include "suite/core/sequence.h"

#include <string>

namespace cmn {

// Numbers as text first: a stream's locale or base must not change them.
void TESKSequence::WriteString(std::ostream& out) const {
  out << codes::editNameByTeskEventCode(GetEventCode()) + "Sequence(code=" + std::to_string(GetEventCode()) +
             ", event count = " + std::to_string(GetSize()) + ")";
}

void TESKSequence::WriteString(exc::CoutBuffer& out) const {
  WriteString(static_cast<std::ostream&>(out));
}

}  // namespace cmn
