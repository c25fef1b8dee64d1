#include "exc/console/cout_buffer.h"

namespace exc {

CoutBuffer::CoutBuffer() : OutBuffer(thread_safe_cout) {}

CoutBuffer::~CoutBuffer() = default;

}  // namespace exc
