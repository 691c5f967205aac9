# ./dev mkvmux: the command-line tool under Wine. Sourced by ./dev; expects $BUILD.

# Drive Z: is the whole file system and the current directory stays what it is, so Linux paths work as they are,
# absolute ones and relative ones. The module comes from beside the program: nothing needs to be registered.
verb_mkvmux() {
  build_windows mkvmux QRX_MKVMuxer
  need_wine_prefix
  exec "$WINE" "$BUILD/windows/bin/mkvmux.exe" --no-register "$@"
}
