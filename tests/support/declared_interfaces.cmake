# declared_interfaces.h: every interface that the COM and DirectShow headers of the toolchain declare, as rows of name
# and identifier, so that a test can ask an object for all of them.
if(WIN32)
  set(folders /usr/share/mingw-w64/include /usr/x86_64-w64-mingw32/include)
else()
  set(folders /usr/include/wine/wine/windows)
endif()
find_path(QRX_PLATFORM_HEADERS strmif.h PATHS ${folders} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)

set(rows)
foreach(header unknwn objidl oaidl oleidl ocidl servprov strmif control mediaobj)
  file(READ ${QRX_PLATFORM_HEADERS}/${header}.h text)
  string(REGEX MATCHALL "MIDL_INTERFACE\\(\"[-0-9a-fA-F]+\"\\)[ \r\n]+I[A-Za-z0-9_]+" declarations "${text}")
  foreach(declaration IN LISTS declarations)
    string(REGEX REPLACE "MIDL_INTERFACE\\(\"([-0-9a-fA-F]+)\"\\)[ \r\n]+(I[A-Za-z0-9_]+)" "{\"\\2\", \"\\1\"},\n" row
      "${declaration}")
    string(APPEND rows "${row}")
  endforeach()
endforeach()
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/generated/declared_interfaces.h CONTENT "@rows@" @ONLY)
set_source_files_properties(known_interfaces.cpp PROPERTIES
  INCLUDE_DIRECTORIES ${CMAKE_CURRENT_BINARY_DIR}/generated)
