# A screen that nobody sees, and a Wine prefix whose programs show their windows on it.
# Sourced by ./dev; expects `die`, `say`, $BUILD, $WINE, $WINESERVER.

PACKAGES_DISPLAY=(xvfb xdotool imagemagick fonts-wine)
DISPLAY_SIZE=1280x1024x24
display_pid=

# start_display: an X server with a free number, and a prefix of its own: the windows of a prefix all go to the
# screen that its first program saw.
start_display() {
  need_packages "${PACKAGES_DISPLAY[@]}"
  display_caller_prefix=$WINEPREFIX
  display_caller_display=${DISPLAY:-}
  local number_file="$BUILD/display.$$"
  : >"$number_file"
  Xvfb -displayfd 3 -screen 0 "$DISPLAY_SIZE" -nolisten tcp 3>"$number_file" >"$BUILD/xvfb.log" 2>&1 </dev/null &
  display_pid=$!
  trap stop_display EXIT
  for _ in $(seq 6000); do # a watchdog of ten minutes
    [ -s "$number_file" ] && break
    kill -0 "$display_pid" 2>/dev/null || break
    sleep 0.1
  done
  [ -s "$number_file" ] || die "Xvfb does not start; see $BUILD/xvfb.log"
  DISPLAY=":$(tr -d '[:space:]' <"$number_file")"
  rm -f "$number_file"
  export DISPLAY WINEPREFIX="$WINEPREFIX-display"
  # A server left over from an interrupted run would look for the screen of that run.
  [ -d "$WINEPREFIX" ] && "$WINESERVER" -k >/dev/null 2>&1
  need_wine_prefix
  # No window manager runs here: Wine draws the frames of the windows itself.
  set_display_key 'HKCU\Software\Wine\X11 Driver' Managed REG_SZ N
}

# set_display_key KEY VALUE TYPE DATA
set_display_key() {
  "$WINE" reg add "$1" /v "$2" /t "$3" /d "$4" /f >/dev/null 2>&1 || die "the registry of $WINEPREFIX cannot be written"
}

# set_display_dpi DPI: for programs that start from now on.
set_display_dpi() {
  set_display_key 'HKCU\Control Panel\Desktop' LogPixels REG_DWORD "$1"
}

# Ends what start_display began; harmless when nothing is there.
stop_display() {
  [ -n "$display_pid" ] || return 0
  # Only the display's own server: others may be using that of the caller's prefix.
  [ "$WINEPREFIX" != "$display_caller_prefix" ] && "$WINESERVER" -k >/dev/null 2>&1
  kill "$display_pid" 2>/dev/null
  wait "$display_pid" 2>/dev/null
  display_pid=
  WINEPREFIX=$display_caller_prefix
  if [ -n "$display_caller_display" ]; then DISPLAY=$display_caller_display; else unset DISPLAY; fi
}
