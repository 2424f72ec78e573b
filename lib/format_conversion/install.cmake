# The library alone: `cmake --install BUILD --component format_conversion --prefix DIR`. Headers keep their path below
# the repository, so that code reads the same inside and outside of it.
include(CMakePackageConfigHelpers)

set(include_root ${CMAKE_INSTALL_INCLUDEDIR}/quillo)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/QuilloFormatConversion)

target_include_directories(format_conversion INTERFACE $<INSTALL_INTERFACE:${include_root}>)
target_compile_features(format_conversion INTERFACE cxx_std_17)
install(TARGETS format_conversion EXPORT QuilloFormatConversion
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT format_conversion)
install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/ DESTINATION ${include_root}/lib/format_conversion
  COMPONENT format_conversion FILES_MATCHING PATTERN "*.h"
  PATTERN bodies EXCLUDE
  PATTERN detail/by_alignment.h EXCLUDE
  PATTERN detail/from_rgb.h EXCLUDE
  PATTERN detail/from_ycbcr444.h EXCLUDE
  PATTERN detail/picture_walk.h EXCLUDE
  PATTERN detail/to_uyvy.h EXCLUDE
  PATTERN line/instances.h EXCLUDE
  PATTERN line/vec.h EXCLUDE)

install(EXPORT QuilloFormatConversion NAMESPACE Quillo:: FILE QuilloFormatConversionConfig.cmake
  DESTINATION ${package_folder} COMPONENT format_conversion)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/QuilloFormatConversionConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
configure_file(quillo-format-conversion.pc.in quillo-format-conversion.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/QuilloFormatConversionConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT format_conversion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/quillo-format-conversion.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT format_conversion)
