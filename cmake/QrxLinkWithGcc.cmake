# Links with GCC's driver what clang compiled (mingw-w64-clang.cmake): read when CMake has set its own rules.
foreach(rule CMAKE_CXX_LINK_EXECUTABLE CMAKE_CXX_CREATE_SHARED_MODULE CMAKE_CXX_CREATE_SHARED_LIBRARY)
  string(REPLACE "<CMAKE_CXX_COMPILER>" "${QRX_GCC_LINKER}" ${rule} "${${rule}}")
  # What only clang's compiler understands.
  string(REPLACE "<FLAGS>" "" ${rule} "${${rule}}")
  string(REPLACE "<LANGUAGE_COMPILE_FLAGS>" "" ${rule} "${${rule}}")
endforeach()
