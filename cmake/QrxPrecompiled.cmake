# The headers that cost every source the most, parsed once for all libraries and once for all tests: a target each was a
# third of the whole build. Each source still includes what it uses.

set(QRX_PRECOMPILED <algorithm> <atomic> <memory> <mutex> <optional> <string> <vector>
  ${CMAKE_SOURCE_DIR}/win/platform.h)

# The compiler takes a precompiled header only for the flags that it was made with.
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/precompiled.cpp CONTENT "// Carries the precompiled headers.\n")

add_library(qrx_precompiled OBJECT ${CMAKE_BINARY_DIR}/precompiled.cpp)
target_link_libraries(qrx_precompiled PUBLIC qrx_common)
target_precompile_headers(qrx_precompiled PRIVATE ${QRX_PRECOMPILED})

add_library(qrx_test_precompiled OBJECT ${CMAKE_BINARY_DIR}/precompiled.cpp)
target_link_libraries(qrx_test_precompiled PUBLIC qrx_common GTest::gmock)
target_compile_options(qrx_test_precompiled PRIVATE ${QRX_TEST_OPTIONS})
target_precompile_headers(qrx_test_precompiled PRIVATE ${QRX_PRECOMPILED} <gtest/gtest.h> <gmock/gmock.h>)
