# The Debian packages that each kind of work needs, and how they get installed.
# Sourced by ./dev; expects `die` and `say`.

# The cross build and the Wine prefix.
PACKAGES_BUILD=(
  g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 cmake ninja-build make g++ git ca-certificates
  dpkg-dev xz-utils patch libcli11-dev nlohmann-json3-dev googletest libz-mingw-w64-dev
)
PACKAGES_WINE=(
  wine wine64 gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-ugly
)
# The programs that judge our files, the encoder that makes the inputs, and the sources of other locales.
PACKAGES_JUDGES=(mkvtoolnix ffmpeg mediaconch libwebm-tools iso-codes python3 locales)
# The programs that play them.
PACKAGES_PLAYERS=(
  ffmpeg python3 chromium chromium-driver chromium-sandbox
  gstreamer1.0-tools gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-libav
)
PACKAGES_SANITIZE=(
  g++ cmake ninja-build pkg-config libwine-dev libebml-dev libmatroska-dev libpugixml-dev zlib1g-dev googletest git
)
PACKAGES_CLANG=(clang)
PACKAGES_COVERAGE=(gcovr python3)
# The fuzzers, and the encoders that make their first inputs.
PACKAGES_FUZZ=(clang libclang-rt-14-dev libexpat1-dev ffmpeg python3)
# The native benchmarks, the muxers that ours is compared with, and the plot.
PACKAGES_BENCH=(
  g++ cmake ninja-build make pkg-config dpkg-dev xz-utils patch libwine-dev libpugixml-dev zlib1g-dev googletest
  nlohmann-json3-dev libavformat-dev libavcodec-dev libavutil-dev ffmpeg mkvtoolnix python3 python3-matplotlib
)
# What ./dev package packs and makes: widl with the interfaces that it reads and the standard type library, the installer,
# pages of the documents.
PACKAGES_PACKAGE=(mingw-w64-tools libwine libwine-dev nsis pandoc python3 dpkg-dev xz-utils)
PACKAGES_LINT=(clang-format clang-tidy python3)

# have_package NAME: whether dpkg has it installed.
have_package() {
  [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# as_root COMMAND…: runs it as root, through sudo when we are not.
as_root() {
  if [ "$(id -u)" = 0 ]; then
    "$@"
  elif command -v sudo >/dev/null 2>&1; then
    sudo "$@"
  else
    die "packages must be installed, and this is neither root nor a user with sudo: $*"
  fi
}

# need_packages NAME…: installs what is missing; says which package cannot be had.
need_packages() {
  local missing=() name
  for name in "$@"; do have_package "$name" || missing+=("$name"); done
  [ ${#missing[@]} -eq 0 ] && return 0
  command -v apt-get >/dev/null 2>&1 || die "this needs Debian 12 with apt-get, for: ${missing[*]}"
  say "installing: ${missing[*]}"
  as_root apt-get update -qq || die "apt-get update failed; the missing packages are: ${missing[*]}"
  for name in "${missing[@]}"; do
    apt-cache show "$name" >/dev/null 2>&1 || die "package $name is not offered by this machine's apt sources (Debian 12 main is needed)"
  done
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >"$BUILD/apt.log" 2>&1 ||
    die "apt-get could not install ${missing[*]}; its output is in $BUILD/apt.log"
}
