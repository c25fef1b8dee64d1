# Installs into an empty folder, builds a small host with nothing but the installed package, and runs it.
file(REMOVE_RECURSE ${WORK})
function(step name)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${name} failed (${status}):\n${output}")
  endif()
  set(last_output "${output}" PARENT_SCOPE)
endfunction()

step("install" ${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/installed)
step("configure" ${CMAKE_COMMAND} -S ${HOST} -B ${WORK}/build -G Ninja -DCMAKE_BUILD_TYPE=Debug
     -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_PREFIX_PATH=${WORK}/installed)
step("build" ${CMAKE_COMMAND} --build ${WORK}/build)
step("run" ${WORK}/build/small_host ${WORK}/no-such-show)
if(NOT last_output MATCHES "cannot open the show")
  message(FATAL_ERROR "the small host said: ${last_output}")
endif()
step("installed program" ${WORK}/installed/bin/orbel --version)

# What the README shows for embedding the library, taken from it word for word, builds and plays the demo show.
file(READ ${README} readme)
foreach(language cmake cpp)
  if(NOT readme MATCHES "```${language}\n([^`]*)```")
    message(FATAL_ERROR "the README has no sample in ${language}")
  endif()
  set(${language}_sample "${CMAKE_MATCH_1}")
endforeach()
file(WRITE ${WORK}/readme/my_host.cpp "${cpp_sample}")
file(WRITE ${WORK}/readme/CMakeLists.txt "cmake_minimum_required(VERSION 3.25)\nproject(my_host LANGUAGES CXX)\n"
     "add_executable(my_host my_host.cpp)\n${cmake_sample}")
step("configure the README's host" ${CMAKE_COMMAND} -S ${WORK}/readme -B ${WORK}/readme/build -G Ninja
     -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_PREFIX_PATH=${WORK}/installed)
step("build the README's host" ${CMAKE_COMMAND} --build ${WORK}/readme/build)
step("write the demo show" ${WORK}/installed/bin/orbel demo ${WORK}/readme/demo-show)
step("run the README's host" ${CMAKE_COMMAND} -E chdir ${WORK}/readme ${WORK}/readme/build/my_host)
file(REMOVE_RECURSE ${WORK})
