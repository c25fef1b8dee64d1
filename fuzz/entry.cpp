// The one door of libFuzzer; which target stands behind it is said by the build.
#include "fuzz/targets/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::ORBEL_FUZZ_TARGET({data, size});
  return 0;
}
