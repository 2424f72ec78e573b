# Every choice a builder has, printed once at the end of configuring (cmake/summary.cmake).

option(QUILLO_BUILD_TOOLS "Build the quillo command: stand-in host and publisher (needs GStreamer)" ON)
option(QUILLO_BUILD_TESTS "Build the tests (needs GoogleTest)" ON)
option(QUILLO_BUILD_BENCH "Build the benchmarks (needs Google Benchmark)" OFF)
option(QUILLO_BUILD_FUZZERS "Build the fuzz targets (needs Clang)" OFF)
option(QUILLO_WERROR "Treat warnings as errors" OFF)
option(QUILLO_PRECOMPILE "Precompile shared headers: quicker from nothing, without ccache" OFF)
set(QUILLO_MACOS AUTO CACHE STRING "Make the macOS module too, on Linux: ON, OFF, or AUTO for when the tools are there")
set(QUILLO_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address,undefined")
set(QUILLO_HOST_SDK "" CACHE PATH "Folder of the host vendor's headers; empty: the declarations in host/")
set(QUILLO_PRODUCT_PAGE "http://localhost:8580/" CACHE STRING "Page that the host's setup button opens")

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()
