# The same target as mingw-w64.cmake, compiled by clang. The C++ library, its headers, the runtime and the linker are those
# of GCC, so that whatever one compiler made can be linked with what the other made.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
set(QRX_GCC_LINKER ${CMAKE_CXX_COMPILER})
set(QRX_GCC_FOLDER /usr/lib/gcc/x86_64-w64-mingw32/12-posix)
set(CMAKE_AR x86_64-w64-mingw32-ar)
set(CMAKE_RANLIB x86_64-w64-mingw32-ranlib)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
# thread_local as GCC's runtime keeps it. clang's own driver does not look into a folder of that name.
set(CMAKE_CXX_FLAGS_INIT "-femulated-tls -nostdinc++ \
-isystem ${QRX_GCC_FOLDER}/include/c++ -isystem ${QRX_GCC_FOLDER}/include/c++/x86_64-w64-mingw32 \
-isystem ${QRX_GCC_FOLDER}/include/c++/backward")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
# GCC's driver links: it knows where its runtime lies and in which order it is linked.
set(CMAKE_PROJECT_INCLUDE ${CMAKE_CURRENT_LIST_DIR}/QrxLinkWithGcc.cmake)
