# ./dev screenshots: pictures of the property pages for the documents. Sourced by ./dev; expects `die`, `say`, $BUILD,
# $ROOT.

SCREENSHOT_SCENES=(empty tracks list scrolled about)

# shoot SCENE FILE: the part of the screen that the scene covers.
shoot() {
  local scene=$1 file=$2 line='' status
  : >"$BUILD/scene.log"
  coproc SCENE { "$WINE" "$BUILD/windows/bin/property_page_scenes.exe" "$scene" 2>>"$BUILD/scene.log"; }
  local pid=$SCENE_PID in=${SCENE[1]} out=${SCENE[0]}
  # What comes before "ready" is what failed.
  while [ "$line" != ready ]; do
    IFS= read -r -t 600 line <&"$out" || break
    line=${line%$'\r'}
    printf '%s\n' "$line" >>"$BUILD/scene.log"
  done
  # The screen is black around the windows.
  [ "$line" = ready ] && import -window root -trim +repage "$file"
  status=$?
  exec {in}>&-
  wait "$pid" || status=1
  [ "$status" -eq 0 ] || die "no picture of scene '$scene'; see $BUILD/scene.log"
  say "$file"
}

# verb_screenshots [DPI]: at another resolution than 96 the pictures get names of their own.
verb_screenshots() {
  build_windows property_page_scenes QRX_MKVMuxer
  start_display
  set_display_dpi "${1:-96}"
  local scene suffix=''
  [ "${1:-96}" = 96 ] || suffix="-$1dpi"
  mkdir -p "$ROOT/docs/images"
  for scene in "${SCREENSHOT_SCENES[@]}"; do shoot "$scene" "$ROOT/docs/images/pages-$scene$suffix.png"; done
  stop_display
}
