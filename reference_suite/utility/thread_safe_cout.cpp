#include <iostream>

#include "exc/console/thread_safe_ostream.h"

namespace exc {

constinit ThreadSafeOStream thread_safe_cout(std::cout);

}  // namespace exc
