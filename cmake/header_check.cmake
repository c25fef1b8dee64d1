# Every header compiles alone: one generated source for each, with nothing else in it. A header that leans on
# whoever includes it fails here.
set(ORBEL_HEADER_ROOTS exc suite Sources player_core)
if(ORBEL_HOSTS)
  list(APPEND ORBEL_HEADER_ROOTS reference_suite host)
endif()
list(TRANSFORM ORBEL_HEADER_ROOTS REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/\\1/*.h" OUTPUT_VARIABLE patterns)
file(GLOB_RECURSE headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} ${patterns})

set(sources)
foreach(header IN LISTS headers)
  string(REPLACE "/" "__" name "${header}")
  set(source "${PROJECT_BINARY_DIR}/header_check/${name}.cpp")
  file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${header}\"\n")
  list(APPEND sources ${source})
endforeach()
add_library(header_check OBJECT ${sources})
target_link_libraries(header_check PRIVATE orbel_warnings Threads::Threads)
target_include_directories(header_check PRIVATE ${PROJECT_SOURCE_DIR})
