# ORBEL_SANITIZE instruments everything, tests included; ORBEL_COVERAGE likewise.
if(ORBEL_SANITIZE)
  add_compile_options(-fsanitize=${ORBEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all -g)
  add_link_options(-fsanitize=${ORBEL_SANITIZE})
endif()
# With clang++ the branches are those of the source: none that only an exception takes.
if(ORBEL_COVERAGE AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  add_compile_options(-fprofile-instr-generate -fcoverage-mapping -O0)
  add_link_options(-fprofile-instr-generate)
elseif(ORBEL_COVERAGE)
  add_compile_options(--coverage -O0 -g)
  add_link_options(--coverage)
endif()
