# ./dev mkvmux: the command-line tool under Wine. Sourced by ./dev; expects $BUILD.

# asks_for_quiet ARGUMENT…: whether one of them is -q or --quiet.
asks_for_quiet() {
  local argument
  for argument in "$@"; do
    case "$argument" in -q | --quiet) return 0 ;; esac
  done
  return 1
}

# build_mkvmux: the tool and its module.
build_mkvmux() { build_windows mkvmux QRX_MKVMuxer; }

# build_mkvmux_quietly: the same; what the build tool says is shown only when it fails.
build_mkvmux_quietly() {
  local log="$BUILD/mkvmux-build.log"
  (build_mkvmux) >"$log" 2>&1 || { cat "$log" >&2; exit 2; }
}

# Drive Z: is the whole file system and the current directory stays what it is, so Linux paths work as they are,
# absolute ones and relative ones. The module comes from beside the program: nothing needs to be registered.
verb_mkvmux() {
  if asks_for_quiet "$@"; then build_mkvmux_quietly; else build_mkvmux; fi
  need_wine_prefix
  exec "$WINE" "$BUILD/windows/bin/mkvmux.exe" --no-register "$@"
}
