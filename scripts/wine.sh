# The Wine prefix of this build, and how programs run in it.
# Sourced by ./dev; expects `die`, `say`, $ROOT, $BUILD.

export WINEARCH=win64
export WINEPREFIX="${QRX_WINEPREFIX:-$BUILD/wineprefix}"
export WINEDEBUG="${WINEDEBUG:--all}"
# No menu entries, no browser or Mono installer windows, no search for sound cards (it fills standard error).
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-winealsa.drv,winepulse.drv,winemenubuilder.exe,mscoree,mshtml=}"
WINE="$ROOT/scripts/wine64"
WINE_LOADER=/usr/lib/wine/wine64
WINESERVER=/usr/lib/wine/wineserver64

need_wine_prefix() {
  need_packages "${PACKAGES_WINE[@]}"
  [ -x "$WINE_LOADER" ] || die "$WINE_LOADER is missing although the package wine64 is installed"
  if [ ! -f "$WINEPREFIX/.ready" ]; then
    say "making a Wine prefix in $WINEPREFIX"
    "$WINE" wineboot -i >"$BUILD/wineboot.log" 2>&1 || die "wineboot failed; see $BUILD/wineboot.log"
    touch "$WINEPREFIX/.ready"
  fi
  # The first program of a session starts Wine's own services, which keep the output that they inherit open for as long
  # as the server stays: whoever reads what a program writes into a pipe would wait for them. So that program is this one.
  "$WINE" cmd /c exit </dev/null >/dev/null 2>&1
}

# windows_path PATH: the path as a Windows program under Wine sees it (drive Z: is the whole file system).
windows_path() {
  local path=$1
  case "$path" in /*) ;; *) path="$PWD/$path" ;; esac
  path=${path//\//\\}
  printf 'Z:%s' "$path"
}
