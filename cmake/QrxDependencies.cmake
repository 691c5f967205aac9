# What others wrote: libebml, libmatroska and GoogleTest. All of it is installed by ./dev.

if(WIN32 OR QRX_BENCH)
  find_package(EBML REQUIRED CONFIG)
  find_package(Matroska REQUIRED CONFIG)
  add_library(qrx_matroska INTERFACE)
  target_link_libraries(qrx_matroska INTERFACE Matroska::matroska EBML::ebml)
else()
  # Debian's own builds for Linux; they keep the libraries' asserts.
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(MATROSKA REQUIRED IMPORTED_TARGET libmatroska libebml)
  add_library(qrx_matroska ALIAS PkgConfig::MATROSKA)
endif()

# GoogleTest from its sources, with our compiler (Debian ships them for exactly this).
set(INSTALL_GTEST OFF)
set(BUILD_GMOCK ON)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
if(QRX_SANITIZE)
  foreach(target gtest gmock)
    target_compile_options(${target} PRIVATE -fsanitize=${QRX_SANITIZERS})
  endforeach()
endif()
if(NOT TARGET GTest::gmock)
  add_library(GTest::gmock ALIAS gmock)
endif()
