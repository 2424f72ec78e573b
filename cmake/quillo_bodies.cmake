# quillo_bodies(TARGET SOURCES...): kernel bodies of a target, compiled once for every processor that they are built for.
function(quillo_bodies target)
  # The vectors are written out; the loops beside them are for what is left over. What does not change in a loop is
  # decided before it, which GCC does from -O3 on.
  set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS
    "$<$<NOT:$<CONFIG:Debug>>:-O3>;$<IF:$<CXX_COMPILER_ID:GNU>,-fno-tree-vectorize,-fno-vectorize>")
  target_sources(${target} PRIVATE ${ARGN})
  if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    return()
  endif()
  set(avx2 -mavx2)
  set(avx512 -mavx2 -mavx512f -mavx512bw -mavx512vl -mavx512vbmi -mavx512vnni)
  foreach(processor avx2 avx512)
    add_library(${target}_${processor} OBJECT ${ARGN})
    target_compile_definitions(${target}_${processor} PRIVATE QUILLO_WIDE QUILLO_PROCESSOR=${processor})
    target_compile_options(${target}_${processor} PRIVATE ${${processor}})
    # GCC 12 warns of its own headers' deliberately undefined vectors.
    target_compile_options(${target}_${processor} PRIVATE "$<$<CXX_COMPILER_ID:GNU>:-Wno-uninitialized;-Wno-maybe-uninitialized>")
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}_${processor}>)
  endforeach()
endfunction()
