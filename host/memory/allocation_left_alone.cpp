// In place of allocation.cpp where a sanitizer allocates: its own malloc has to stay the program's.
#include "host/memory/allocation.h"

namespace orbel::host {

void RefuseWhereThereIsNoMemory() noexcept {}

SmallPiecesFromReserve::SmallPiecesFromReserve() noexcept = default;

SmallPiecesFromReserve::~SmallPiecesFromReserve() = default;

}  // namespace orbel::host
