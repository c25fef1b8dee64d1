# record_lock_order(<program>): records how the locks of a test program nest, and holds every test to the table
# in docs/threads-and-locks.md.
function(record_lock_order program)
  set(folder ${PROJECT_SOURCE_DIR}/tests/support/lock_order)
  target_sources(${program} PRIVATE ${folder}/lock_order.cpp ${folder}/lock_table.cpp
    ${PROJECT_SOURCE_DIR}/tests/support/observed_locks.cpp ${folder}/wait_calls.cpp ${folder}/program_check.cpp)
  target_compile_definitions(${program} PRIVATE ORBEL_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  target_link_options(${program} PRIVATE
    LINKER:--wrap=pthread_cond_wait,--wrap=pthread_cond_timedwait,--wrap=pthread_join)
  # The stacks that it writes have names.
  set_target_properties(${program} PROPERTIES ENABLE_EXPORTS ON)
endfunction()
