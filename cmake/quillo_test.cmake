# quillo_test(NAME area_name SOURCES ... LIBRARIES ... [LABELS ...] [PARTS n]): one GoogleTest program, its cases known to
# CTest; or, of one whose many cases each take less than a process does, so many parts of them.
# Labels with a meaning: threads, memory: run under the thread sanitizer, under the address sanitizer, by ./check too;
# timed: measures times, so that nothing else runs beside it.
include(GoogleTest)
find_package(GTest REQUIRED)

# What ./check builds for each of the sanitizers.
foreach(label threads memory)
  add_custom_target(check_${label})
  add_dependencies(check_${label} transmit_module)
endforeach()

# Not optimised, unless the product is too: each runs for moments and is compiled anew for each sanitizer. What tests share
# and has much to do, like the references of the conversions, is in libraries.
function(quillo_test_options target)
  target_compile_options(${target} PRIVATE $<$<CONFIG:Debug>:-O0>)
endfunction()

# Shared by all test programs.
if(QUILLO_PRECOMPILE)
  file(CONFIGURE OUTPUT test_headers.cpp CONTENT "int main() {}\n")
  add_executable(test_headers EXCLUDE_FROM_ALL ${CMAKE_CURRENT_BINARY_DIR}/test_headers.cpp)
  target_link_libraries(test_headers PRIVATE GTest::gmock GTest::gtest)
  # GStreamer's users are compiled so, and precompiled headers serve only who is compiled alike.
  target_compile_options(test_headers PRIVATE -pthread)
  quillo_test_options(test_headers)
  quillo_precompile(test_headers ${QUILLO_TEST_HEADERS})
endif()

function(quillo_test)
  cmake_parse_arguments(arg "" "NAME;PARTS" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  add_executable(${arg_NAME} ${arg_SOURCES})
  target_link_libraries(${arg_NAME} PRIVATE ${arg_LIBRARIES} GTest::gmock GTest::gtest GTest::gtest_main)
  quillo_test_options(${arg_NAME})
  if(TARGET test_headers)
    target_precompile_headers(${arg_NAME} REUSE_FROM test_headers)
    target_compile_options(${arg_NAME} PRIVATE -pthread)
  endif()
  set(properties TIMEOUT 240)
  if("timed" IN_LIST arg_LABELS)
    list(APPEND properties RUN_SERIAL TRUE)
  endif()
  list(JOIN arg_LABELS " " labels) # it takes one; ctest -L looks for parts of it
  if(arg_PARTS)
    foreach(part RANGE 1 ${arg_PARTS})
      math(EXPR index "${part} - 1")
      set(name ${arg_NAME}.part_${part}_of_${arg_PARTS})
      add_test(NAME ${name} COMMAND ${arg_NAME} --gtest_brief=1)
      set_tests_properties(${name} PROPERTIES ${properties} LABELS "${labels}"
        ENVIRONMENT "GTEST_TOTAL_SHARDS=${arg_PARTS};GTEST_SHARD_INDEX=${index}")
    endforeach()
  else()
    gtest_discover_tests(${arg_NAME} TEST_PREFIX "${arg_NAME}." DISCOVERY_TIMEOUT 60
      PROPERTIES ${properties} LABELS "${labels}")
  endif()
  foreach(label IN LISTS arg_LABELS)
    if(TARGET check_${label})
      add_dependencies(check_${label} ${arg_NAME})
    endif()
  endforeach()
endfunction()
