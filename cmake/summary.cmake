message(STATUS "Quillo Transmit ${PROJECT_VERSION}, ${CMAKE_BUILD_TYPE}, ${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}")
message(STATUS "  tools ${QUILLO_BUILD_TOOLS}, tests ${QUILLO_BUILD_TESTS}, benchmarks ${QUILLO_BUILD_BENCH}, "
  "sanitizers '${QUILLO_SANITIZE}', host headers '${QUILLO_HOST_SDK}', product page ${QUILLO_PRODUCT_PAGE}")
