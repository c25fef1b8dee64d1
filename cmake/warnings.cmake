# One interface target carries the warnings; every module of ours links it.
add_library(orbel_warnings INTERFACE)
target_compile_options(orbel_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wundef -Wcast-qual)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # g++ 12 sees overlaps in std::string's own concatenation where there are none.
  target_compile_options(orbel_warnings INTERFACE -Wno-restrict)
  if(ORBEL_SANITIZE)
    # And, between the sanitizers' own checks, values of std::regex without a beginning.
    target_compile_options(orbel_warnings INTERFACE -Wno-maybe-uninitialized)
  endif()
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  target_compile_options(orbel_warnings INTERFACE -Wthread-safety -Wthread-safety-beta)
endif()
if(ORBEL_WERROR)
  target_compile_options(orbel_warnings INTERFACE -Werror)
endif()
