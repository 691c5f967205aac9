# How this project's own targets are built: one static library a folder, warnings as errors.

if(WIN32)
  enable_language(RC)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

# Flags, definitions and include paths that every target of ours takes.
add_library(qrx_common INTERFACE)
target_include_directories(qrx_common INTERFACE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/include)
if(MSVC)
  target_compile_options(qrx_common INTERFACE /W4 /WX /permissive- /utf-8 /EHsc /Zc:__cplusplus /Zc:preprocessor
    # Names that hide others, conversions and virtual destructors are what the other compilers warn of as we want it.
    /wd4244 /wd4267 /wd4265 /wd4458)
else()
  target_compile_options(qrx_common INTERFACE
    # COM objects have no virtual destructor: Release alone destroys them, so only a delete through such a type is wrong.
    -Wall -Wextra -Wshadow -Wconversion -Wdelete-non-virtual-dtor -Werror)
endif()
target_compile_definitions(qrx_common INTERFACE UNICODE _UNICODE NO_DSHOW_STRSAFE NOMINMAX)

if(NOT WIN32)
  # Wine's headers give the COM interfaces and the DirectShow structures on Linux; no Wine code is linked, the
  # few Win32 functions that the sources use come from tests/native.
  target_include_directories(qrx_common SYSTEM INTERFACE /usr/include/wine/wine/windows)
  target_compile_definitions(qrx_common INTERFACE WINE_UNICODE_CHAR16 QRX_NATIVE)
  if(QRX_SANITIZE)
    target_compile_options(qrx_common INTERFACE
      -fsanitize=${QRX_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
    target_link_options(qrx_common INTERFACE -fsanitize=${QRX_SANITIZERS})
  endif()
  if(QRX_COVERAGE)
    # The tests, too, though gcovr leaves them out: of an inline function the linker takes whichever copy comes first.
    target_compile_options(qrx_common INTERFACE --coverage -fprofile-update=atomic)
    target_link_options(qrx_common INTERFACE --coverage)
  endif()
  # Wine's 64-bit integers carry an alignment, which a template argument such as std::optional<INT64> drops.
  target_compile_options(qrx_common INTERFACE -Wno-ignored-attributes)
  if(QRX_FUZZ)
    # clang warns of other things than the compiler that the sources are written for.
    target_compile_options(qrx_common INTERFACE -fsanitize=fuzzer-no-link -Wno-error -w)
  endif()
  find_package(Threads REQUIRED)
  target_link_libraries(qrx_common INTERFACE Threads::Threads)
else()
  target_compile_definitions(qrx_common INTERFACE
    WINVER=0x0601 _WIN32_WINNT=0x0601 WIN32_LEAN_AND_MEAN)
  # No library of the toolchain's beside ours; and what tests/files/test_hardening.py looks for in the headers. The
  # toolchain has no control flow guard, and its stack protector asks the system's cryptography for random bytes while
  # a module is being loaded, where no library may be: SECURITY.md.
  if(MSVC)
    target_compile_options(qrx_common INTERFACE /guard:cf)
    target_link_options(qrx_common INTERFACE /DYNAMICBASE /HIGHENTROPYVA /NXCOMPAT /guard:cf)
  else()
    target_link_options(qrx_common INTERFACE -static
      LINKER:--dynamicbase,--high-entropy-va,--nxcompat,--enable-reloc-section)
  endif()
endif()

# qrx_library(NAME [WITHOUT_PLATFORM] SOURCES … LINK …): the static library of one source folder. WITHOUT_PLATFORM: its
# sources know no Windows header, so they are not given the precompiled one either.
function(qrx_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "WITHOUT_PLATFORM" "" "SOURCES;LINK")
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC qrx_common ${arg_LINK})
  if(NOT arg_WITHOUT_PLATFORM)
    target_precompile_headers(${name} REUSE_FROM qrx_precompiled)
  endif()
  # What is built whole more often than a file at a time, as the sanitizers' lanes are: a folder in pieces of ten sources
  # takes half as long. Lint sees to it that the sources of a folder go together; those of tests need not.
  if((QRX_SANITIZE OR QRX_UNITY) AND NOT CMAKE_CURRENT_SOURCE_DIR MATCHES "/(tests|fuzz)(/|$)")
    set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 10)
  endif()
endfunction()

# What is tested is optimised, the tests themselves need not be: that halves the build.
if(MSVC)
  set(QRX_TEST_OPTIONS /Od)
else()
  set(QRX_TEST_OPTIONS -O0 -g1)
endif()

# Sources of every test program.
set(QRX_TEST_EVERYWHERE)
if(WIN32)
  list(APPEND QRX_TEST_EVERYWHERE ${CMAKE_SOURCE_DIR}/tests/support/crash_report.cpp)
endif()

# qrx_test(NAME SOURCES … LINK …): one GoogleTest program; ./dev test and ./dev sanitize run every program
# in build/*/bin whose name begins with test_.
function(qrx_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
  add_executable(test_${name} ${arg_SOURCES} ${QRX_TEST_EVERYWHERE})
  target_link_libraries(test_${name} PRIVATE ${arg_LINK} test_support gmock_main)
  set_target_properties(test_${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
  target_precompile_headers(test_${name} REUSE_FROM qrx_test_precompiled)
  target_compile_options(test_${name} PRIVATE ${QRX_TEST_OPTIONS})
  if(NOT WIN32)
    target_link_libraries(test_${name} PRIVATE native_win32)
    add_test(NAME ${name} COMMAND test_${name})
    # As ./dev test gives them to the Windows programs.
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/judged/${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 600
      ENVIRONMENT "QRX_SOURCE_DIR=${CMAKE_SOURCE_DIR};QRX_JUDGE_DIR=${CMAKE_BINARY_DIR}/judged/${name}")
  endif()
endfunction()

# qrx_wide_main(TARGET): its main function is wmain, which mingw's start-up code calls on request alone.
function(qrx_wide_main target)
  if(MINGW)
    target_link_options(${target} PRIVATE -municode)
  endif()
endfunction()

# qrx_version_resource(TARGET FILENAME DESCRIPTION FILETYPE): the version resource, from the project's version.
function(qrx_version_resource target filename description filetype)
  set(QRX_VERSION_FILENAME ${filename})
  set(QRX_VERSION_DESCRIPTION ${description})
  set(QRX_VERSION_FILETYPE ${filetype})
  configure_file(${CMAKE_SOURCE_DIR}/module/version.rc.in ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc @ONLY)
  target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
endfunction()
