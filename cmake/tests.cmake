find_package(GTest REQUIRED)
include(GoogleTest)

# orbel_test(<name> SOURCES <file>... [LIBRARIES <target>...] [PARTS <module>...] [LOCK <name>])
# One program per folder. Sources come before the parts at link time, so a fake defined among them
# takes the place of the part's own object. PARTS are the only modules linked, for a program whose fakes stand
# in for a whole module; without it, all of them. Of the tests with the same LOCK one runs at a time.
function(orbel_test name)
  cmake_parse_arguments(PARSE_ARGV 1 T "" "LOCK" "SOURCES;LIBRARIES;PARTS")
  set(lock "")
  if(T_LOCK)
    set(lock RESOURCE_LOCK ${T_LOCK})
  endif()
  set(parts orbel_parts)
  if(T_PARTS)
    string(REPLACE ";" "," group "${T_PARTS}")
    set(parts "$<LINK_GROUP:RESCAN,${group}>")
  endif()
  add_executable(${name} ${T_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE orbel_warnings ${T_LIBRARIES} ${parts} GTest::gmock GTest::gtest_main
                                        Threads::Threads)
  # The longest takes some two minutes beside others.
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 900 LABELS ${name} ${lock})
endfunction()
