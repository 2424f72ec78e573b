# quillo_bodies(TARGET SOURCES...): kernel bodies of a target, compiled once for every processor that they are built for.
function(quillo_bodies target)
  set(processors ssse3)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    list(APPEND processors avx2 avx512)
  endif()
  set(ssse3 "") # the baseline, or what stands for it elsewhere
  set(avx2 -mavx2)
  set(avx512 -mavx2 -mavx512f -mavx512bw -mavx512vl -mavx512vbmi -mavx512vnni)
  foreach(processor IN LISTS processors)
    set(bodies ${target}_${processor})
    add_library(${bodies} OBJECT ${ARGN})
    # The vectors are written out; the loops beside them are for what is left over. What does not change in a loop is
    # decided before it, which GCC does from -O3 on.
    target_compile_options(${bodies} PRIVATE ${${processor}} "$<$<NOT:$<CONFIG:Debug>>:-O3>"
      $<IF:$<CXX_COMPILER_ID:GNU>,-fno-tree-vectorize,-fno-vectorize>)
    if(NOT "${processor}" STREQUAL "ssse3") # quoted: the bare word is a variable here
      target_compile_definitions(${bodies} PRIVATE QUILLO_WIDE QUILLO_PROCESSOR=${processor})
      # GCC 12 warns of its own headers' deliberately undefined vectors.
      target_compile_options(${bodies} PRIVATE "$<$<CXX_COMPILER_ID:GNU>:-Wno-uninitialized;-Wno-maybe-uninitialized>")
    endif()
    list(LENGTH ARGN count)
    if(count GREATER 1)
      quillo_precompile(${bodies} lib/format_conversion/line/blocks.h)
    endif()
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${bodies}>)
  endforeach()
endfunction()
