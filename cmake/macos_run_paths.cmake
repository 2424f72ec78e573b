# CMake knows this flag only where it can ask a Mac for its version.
set(CMAKE_SHARED_LIBRARY_RUNTIME_C_FLAG "-Wl,-rpath,")
