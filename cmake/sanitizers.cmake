# ORBEL_SANITIZE instruments everything, tests included; ORBEL_COVERAGE likewise.
if(ORBEL_SANITIZE)
  add_compile_options(-fsanitize=${ORBEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all -g)
  add_link_options(-fsanitize=${ORBEL_SANITIZE})
endif()
if(ORBEL_COVERAGE)
  add_compile_options(--coverage -O0 -g)
  add_link_options(--coverage)
endif()
