# Language level, warnings and sanitizers for every target of the project.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

# Float results must not depend on the compiler's taste for fused operations.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wcast-align $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> -Wformat=2 -ffp-contract=off)
if(QUILLO_WERROR)
  add_compile_options(-Werror)
endif()
if(APPLE)
  # Apple's compilers take SSE4.1 for granted otherwise.
  add_compile_options("SHELL:-Xarch_x86_64 -march=core2" -Wno-unused-command-line-argument)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  # The oldest processor that the product supports; wider kernels are chosen at run time.
  add_compile_options(-mssse3)
endif()

if(QUILLO_SANITIZE)
  add_compile_options(-fsanitize=${QUILLO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QUILLO_SANITIZE})
endif()

if(QUILLO_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# The repository root is the one include folder.
include_directories(${PROJECT_SOURCE_DIR})
