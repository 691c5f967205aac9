# libebml and libmatroska for mingw, and pugixml for the tool, from Debian's pristine tarballs.
# Sourced by ./dev; expects `die`, `say`, $ROOT, $BUILD.

LIBEBML_VERSION=1.4.4
LIBMATROSKA_VERSION=1.7.1
PUGIXML_VERSION=1.13
LIBWEBM_VERSION=1.0.0.29 # only compared with
DEPS="$BUILD/deps"

# A private apt configuration that offers the sources of what this machine's own apt offers as binaries.
# The machine's configuration is read, never changed.
source_apt() {
  local dir="$DEPS/apt" file
  mkdir -p "$dir/parts" "$dir/lists/partial" "$dir/cache/archives/partial"
  if [ ! -f "$dir/done" ]; then
    : >"$dir/sources.list"
    [ -f /etc/apt/sources.list ] && sed -nE 's/^[[:space:]]*deb[[:space:]]/deb-src /p' /etc/apt/sources.list >"$dir/sources.list"
    for file in /etc/apt/sources.list.d/*.list; do
      [ -f "$file" ] && sed -nE 's/^[[:space:]]*deb[[:space:]]/deb-src /p' "$file" >"$dir/parts/${file##*/}"
    done
    for file in /etc/apt/sources.list.d/*.sources; do
      [ -f "$file" ] && sed -E 's/^Types:.*/Types: deb-src/' "$file" >"$dir/parts/${file##*/}"
    done
    touch "$dir/done"
    source_apt update || say "apt could not update every list of sources; trying with those it got"
  fi
  apt-get -qq -o Dir::Etc::sourcelist="$dir/sources.list" -o Dir::Etc::sourceparts="$dir/parts" \
    -o Dir::State::lists="$dir/lists" -o Dir::Cache="$dir/cache" -o APT::Sandbox::User=root "$@"
}

# fetch_source NAME VERSION: unpacks NAME-VERSION below $DEPS/src, with Debian's own fixes where they can be had.
fetch_source() {
  local name=$1 version=$2 dir="$DEPS/src"
  [ -d "$dir/$name-$version" ] && return 0
  mkdir -p "$dir"
  say "fetching the sources of $name $version"
  (cd "$dir" && source_apt source --download-only "$name" >"$DEPS/$name-source.log" 2>&1) ||
    (cd "$dir" && source_apt source --tar-only "$name" >>"$DEPS/$name-source.log" 2>&1) ||
    die "the sources of $name cannot be fetched; see $DEPS/$name-source.log"
  local tarball
  tarball=$(find "$dir" -maxdepth 1 -name "${name}_${version}.orig.tar.*" ! -name '*.asc' | head -n 1)
  [ -n "$tarball" ] || die "apt offers another version of $name than $version (see $dir)"
  rm -rf "$dir/unpack" && mkdir "$dir/unpack"
  tar -xf "$tarball" -C "$dir/unpack" || die "$tarball cannot be unpacked"
  apply_debian_patches "$name" "$version" "$dir/unpack/"*/
  mv "$dir/unpack/"* "$dir/$name-$version"
}

# Debian's patches carry the fix for CVE-2023-52339 (a size computation in libebml).
apply_debian_patches() {
  local name=$1 version=$2 tree=$3 packaging patch
  packaging=$(find "$DEPS/src" -maxdepth 1 -name "${name}_${version}-*.debian.tar.*" | head -n 1)
  if [ -z "$packaging" ]; then
    [ "$name" = libebml ] && die "Debian's fixes for libebml cannot be fetched; see $DEPS/$name-source.log"
    return 0
  fi
  tar -xf "$packaging" -C "$tree" || die "$packaging cannot be unpacked"
  [ -f "$tree/debian/patches/series" ] || return 0
  grep -vE '^(#|[[:space:]]*$)' "$tree/debian/patches/series" | while read -r patch; do
    patch -d "$tree" -p1 -s -N -i "$tree/debian/patches/$patch" || die "patch $patch of $name does not apply"
  done || exit 1
}

# build_library NAME VERSION SYSTEM [OPTION…]: builds and installs it as a static library for that system, mingw or
# linux.
build_library() {
  local name=$1 version=$2 system=$3 log="$DEPS/$1-$3-build.log" folder="$DEPS/build-$1"
  shift 3
  [ -f "$DEPS/$system/.$name-$version" ] && return 0
  fetch_source "$name" "$version"
  say "building $name $version for $system"
  [ "$system" = mingw ] || folder="$folder-$system"
  {
    cmake -G Ninja -S "$DEPS/src/$name-$version" -B "$folder" "$@" -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_INSTALL_PREFIX="$DEPS/$system" -DCMAKE_PREFIX_PATH="$DEPS/$system" -DBUILD_SHARED_LIBS=OFF &&
      cmake --build "$folder" && cmake --install "$folder"
  } >"$log" 2>&1 || die "$name does not build; see $log"
  touch "$DEPS/$system/.$name-$version"
}

need_mkv_libraries() {
  mkdir -p "$DEPS"
  build_library libebml "$LIBEBML_VERSION" mingw -DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/mingw-w64.cmake"
  build_library libmatroska "$LIBMATROSKA_VERSION" mingw -DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/mingw-w64.cmake"
  build_library pugixml "$PUGIXML_VERSION" mingw -DPUGIXML_NO_XPATH=ON -DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/mingw-w64.cmake"
}

# The same releases for Linux: Debian's own packages keep the libraries' asserts, which would be measured too.
need_native_mkv_libraries() {
  mkdir -p "$DEPS"
  build_library libebml "$LIBEBML_VERSION" linux
  build_library libmatroska "$LIBMATROSKA_VERSION" linux
}
