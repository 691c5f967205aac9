#!/bin/sh
# Builds libebml and libmatroska from the sources in this folder, as they were built for the module and the tool:
#
#     sh rebuild-libraries.sh
#
# The sources are unpacked into sources/ once: change them there and run this again. The libraries are put into lib/, where
# relink.sh takes them. Needs cmake, ninja, patch and the compiler that relink.sh names.
set -eu
cd "$(dirname "$0")"
here=$PWD
mkdir -p sources
for library in libebml-@EBML_VERSION@ libmatroska-@MATROSKA_VERSION@; do
  name=${library%-*}
  version=${library##*-}
  if [ ! -d "sources/$library" ]; then
    mkdir -p "sources/$library"
    tar -xf "${name}_$version.orig.tar.xz" -C "sources/$library" --strip-components=1
    if [ -f "patches/$name/series" ]; then
      grep -vE '^(#|[[:space:]]*$)' "patches/$name/series" | while read -r change; do
        patch -d "sources/$library" -p1 -s -i "$here/patches/$name/$change"
      done
    fi
  fi
  cmake -G Ninja -S "sources/$library" -B "build-$name" -DCMAKE_TOOLCHAIN_FILE="$here/mingw-w64.cmake" \
    -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DCMAKE_PREFIX_PATH="$here/installed" \
    -DCMAKE_INSTALL_PREFIX="$here/installed"
  cmake --build "build-$name"
  cmake --install "build-$name"
  cp "installed/lib/$name.a" lib/
done
