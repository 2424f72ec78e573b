# quillo_precompile(TARGET HEADERS...): headers that most files of a target include are compiled once for all of them.
# A build from nothing is shorter for it. ccache is of more use without, and so is a check that every file includes what
# it needs; hence an option.
function(quillo_precompile target)
  if(QUILLO_PRECOMPILE)
    list(TRANSFORM ARGN PREPEND "$<$<COMPILE_LANGUAGE:CXX>:<" OUTPUT_VARIABLE headers)
    list(TRANSFORM headers APPEND "$<ANGLE-R>>")
    target_precompile_headers(${target} PRIVATE ${headers})
  endif()
endfunction()

# The standard headers that our files include most.
set(QUILLO_STANDARD_HEADERS algorithm array atomic chrono cmath condition_variable cstdint cstdlib cstring fstream
  functional map memory mutex optional span sstream stdexcept string string_view thread utility vector)

# And those that tests include.
set(QUILLO_TEST_HEADERS ${QUILLO_STANDARD_HEADERS} filesystem iostream regex gtest/gtest.h gmock/gmock.h)
