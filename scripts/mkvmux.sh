# ./dev mkvmux and ./dev example: the command-line tool and the example under Wine. Sourced by ./dev; expects `say`, $BUILD.

# run_interruptible COMMAND…: a Windows program hears of Ctrl-C alone, so the signals that end a program and those of a
# closed terminal are passed on as one; the program itself does not get them. A program that Ctrl-C reached while Wine
# was still starting it ends with 0, or never knew: that is no success.
run_interruptible() {
  local pid status told=
  env --default-signal=INT --ignore-signal=TERM --ignore-signal=HUP "$@" <&0 &
  pid=$!
  trap 'told=1' INT # the terminal tells the program, too
  trap 'told=1; kill -INT "$pid"' TERM HUP
  while :; do
    wait "$pid"
    status=$?
    # A signal that is trapped ends the wait, not the program.
    kill -0 "$pid" 2>/dev/null || break
  done
  trap - INT TERM HUP
  if [ -n "$told" ] && [ "$status" -eq 0 ]; then
    printf 'mkvmux: error: interrupted, but not in time to be noticed; the output may be there or not\n' >&2
    return 2
  fi
  return "$status"
}

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
  run_interruptible "$WINE" "$BUILD/windows/bin/mkvmux.exe" --no-register "$@"
}

# The shortest application, with the module that was built.
verb_example() {
  build_windows mux_wave_here QRX_MKVMuxer
  need_wine_prefix
  run_interruptible "$WINE" "$BUILD/windows/bin/mux_wave_here.exe" \
    "$(windows_path "$BUILD/windows/bin/QRX_MKVMuxer.ax")" "$@"
}
