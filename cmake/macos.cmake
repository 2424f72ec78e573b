# Toolchain: macOS code from Linux with Debian's clang and ld64.lld, the headers and library stubs in macos/, and
# libc++'s own headers. Not for use on a Mac, whose native compiler needs none of this.

set(CMAKE_SYSTEM_NAME Darwin)
set(MACOS_ARCH x86_64 CACHE STRING "x86_64 or arm64")
set(MACOS_LLVM 14 CACHE STRING "Version suffix of the clang and lld tools")
set(MACOS_LIBCXX "" CACHE PATH "Folder made by macos/unpack_libcxx; empty: build/macos/libcxx")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MACOS_ARCH MACOS_LLVM MACOS_LIBCXX)
set(CMAKE_SYSTEM_PROCESSOR ${MACOS_ARCH})

get_filename_component(macos_source ${CMAKE_CURRENT_LIST_DIR}/../macos ABSOLUTE)
set(macos_libcxx ${MACOS_LIBCXX})
if(NOT macos_libcxx)
  get_filename_component(macos_libcxx ${CMAKE_CURRENT_LIST_DIR}/../build/macos/libcxx ABSOLUTE)
  execute_process(COMMAND ${macos_source}/unpack_libcxx ${macos_libcxx} COMMAND_ERROR_IS_FATAL ANY)
endif()

if(MACOS_ARCH STREQUAL "arm64")
  set(macos_minimum 11.0)
  # SIMDe in a folder of its own: the rest of the host's headers must stay out of sight.
  set(macos_simde ${macos_libcxx}/simde)
  file(MAKE_DIRECTORY ${macos_simde})
  file(CREATE_LINK /usr/include/simde ${macos_simde}/simde SYMBOLIC)
else()
  set(macos_minimum 10.15)
endif()
set(CMAKE_OSX_DEPLOYMENT_TARGET ${macos_minimum} CACHE STRING "" FORCE)
set(CMAKE_OSX_ARCHITECTURES "" CACHE STRING "" FORCE)
set(CMAKE_OSX_SYSROOT "" CACHE STRING "" FORCE)
set(CMAKE_USER_MAKE_RULES_OVERRIDE ${CMAKE_CURRENT_LIST_DIR}/macos_run_paths.cmake)
set(CMAKE_HAVE_LIBC_PTHREAD TRUE CACHE INTERNAL "") # the C library has the threads; there is nothing to probe

find_program(CMAKE_C_COMPILER clang-${MACOS_LLVM} REQUIRED)
find_program(CMAKE_CXX_COMPILER clang++-${MACOS_LLVM} REQUIRED)
find_program(MACOS_LD ld64.lld-${MACOS_LLVM} REQUIRED)
foreach(tool AR RANLIB NM STRIP OTOOL INSTALL_NAME_TOOL)
  string(TOLOWER ${tool} name)
  string(REPLACE "_" "-" name ${name})
  find_program(CMAKE_${tool} llvm-${name}-${MACOS_LLVM} REQUIRED)
endforeach()
set(CMAKE_C_COMPILER_TARGET ${MACOS_ARCH}-apple-macos${macos_minimum})
set(CMAKE_CXX_COMPILER_TARGET ${MACOS_ARCH}-apple-macos${macos_minimum})

# Not through the environment nor -DCMAKE_CXX_FLAGS: both would replace these and let the host's headers in.
unset(ENV{CFLAGS})
unset(ENV{CXXFLAGS})
unset(ENV{LDFLAGS})
unset(ENV{LIBRARY_PATH})
set(CMAKE_C_FLAGS_INIT "-nostdlibinc -isystem ${macos_source}/include")
set(CMAKE_CXX_FLAGS_INIT "-nostdlibinc -isystem ${macos_libcxx}/config -isystem ${macos_libcxx}/v1 -isystem ${macos_source}/include")
if(macos_simde)
  string(APPEND CMAKE_CXX_FLAGS_INIT " -isystem ${macos_simde}")
endif()
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-Wno-unused-command-line-argument --ld-path=${MACOS_LD} -nostdlib \
-F${macos_source}/stubs ${macos_source}/stubs/libc++.1.tbd ${macos_source}/stubs/libSystem.B.tbd \
-Wl,-platform_version,macos,${macos_minimum},14.0 -Wl,-adhoc_codesign")
endforeach()

set(CMAKE_FIND_ROOT_PATH ${macos_source})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Part of the compiler on a Mac.
set(QUILLO_COMPILER_RUNTIME ${macos_source}/cpu_model.cpp)
