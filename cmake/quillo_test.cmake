# quillo_test(NAME area_name SOURCES ... LIBRARIES ... [LABELS ...]): one GoogleTest program, its cases known to CTest.
include(GoogleTest)
find_package(GTest REQUIRED)

# All programs labelled threads: what is built for the thread sanitizer.
add_custom_target(thread_tests)
add_dependencies(thread_tests transmit_module)

function(quillo_test)
  cmake_parse_arguments(arg "" "NAME" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  add_executable(${arg_NAME} ${arg_SOURCES})
  target_link_libraries(${arg_NAME} PRIVATE ${arg_LIBRARIES} GTest::gmock GTest::gtest GTest::gtest_main)
  gtest_discover_tests(${arg_NAME} TEST_PREFIX "${arg_NAME}." DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 240 LABELS "${arg_LABELS}")
  if("threads" IN_LIST arg_LABELS)
    add_dependencies(thread_tests ${arg_NAME})
  endif()
endfunction()
