find_package(GTest REQUIRED)
include(GoogleTest)

# orbel_test(<name> SOURCES <file>... [LIBRARIES <target>...])
# One program per folder. Sources come before the parts at link time, so a fake defined among them
# takes the place of the part's own object.
function(orbel_test name)
  cmake_parse_arguments(PARSE_ARGV 1 T "" "" "SOURCES;LIBRARIES")
  add_executable(${name} ${T_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE orbel_warnings ${T_LIBRARIES} orbel_parts GTest::gmock GTest::gtest_main
                                        Threads::Threads)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 300 LABELS ${name})
endfunction()
