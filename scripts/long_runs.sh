# ./dev storm and ./dev day: the long forms of tests whose short forms every run of all tests has. Sourced by ./dev;
# expects `die`, `say`, $ROOT, $BUILD.

STORM_ROUNDS=1000
STORM_LANES=(wine sanitize thread)
DAY_HOURS=24

# run_long LANE FILTER: those tests of the filter, in the lane; what they measured is printed.
run_long() {
  local log="$BUILD/long-$1.log" status
  case "$1" in
    wine) "$WINE" "$BUILD/windows/bin/test_matroska_muxer.exe" --gtest_filter="$2" >"$log" 2>&1 </dev/null ;;
    *) "$BUILD/$1/bin/test_matroska_muxer" --gtest_filter="$2" >"$log" 2>&1 </dev/null ;;
  esac
  status=$?
  if [ "$status" -ne 0 ] || ! grep -qa '^\[  PASSED  \] [1-9]' "$log"; then
    tail -n 40 "$log" >&2
    die "the run in lane '$1' failed; its whole log is $log"
  fi
  tr -d '\r' <"$log" | grep -aE '^[0-9]+ (rounds|packets), ' | sed "s/^/$1: /"
}

# build_lane LANE: the filter's tests.
build_lane() {
  case "$1" in
    wine)
      build_windows test_matroska_muxer
      need_wine_prefix
      ;;
    sanitize | thread)
      need_packages "${PACKAGES_SANITIZE[@]}"
      build_preset "$1" test_matroska_muxer >&2
      ;;
    *) die "there is no lane '$1'; these are: ${STORM_LANES[*]}" ;;
  esac
}

# ./dev storm [ROUNDS] [LANE…]: an application and eight sources that do everything at once.
verb_storm() {
  local rounds=$STORM_ROUNDS lane
  if [[ ${1:-} =~ ^[1-9][0-9]*$ ]]; then
    rounds=$1
    shift
  fi
  [ $# -gt 0 ] || set -- "${STORM_LANES[@]}"
  for lane in "$@"; do
    build_lane "$lane"
    QRX_STORM_ROUNDS=$rounds run_long "$lane" 'Storm.*'
  done
}

# ./dev day [HOURS]: a recording of so long, as fast as it goes.
verb_day() {
  local hours=${1:-$DAY_HOURS}
  [[ $hours =~ ^[1-9][0-9]*$ ]] || die "usage: ./dev day [HOURS]"
  build_lane wine
  QRX_DAY_HOURS=$hours run_long wine 'Day.AsManyHours*'
}
