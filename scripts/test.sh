# ./dev test: every GoogleTest program under Wine, whole files through mkvmux, and the judges.
# Sourced by ./dev; expects `die`, `say`, $ROOT, $BUILD.

TEST_TIMEOUT_SECONDS=600
tests_passed=0
tests_failed=0

# Test programs by name, then the suites that are scripts.
test_programs() {
  local file
  for file in "$BUILD"/windows/bin/test_*.exe; do
    [ -f "$file" ] && file=${file##*/test_} && printf '%s\n' "${file%.exe}"
  done
}
TEST_SCRIPTS=(files judge judge_self languages) # the judges come after all that writes files

# run_program NAME [TITLE]: one GoogleTest program; its own summary is what counts, a crash counts as a failure.
run_program() {
  local name=$1 title=${2:-$1} passed failed status
  local log="$BUILD/windows/logs/$title.log"
  mkdir -p "$BUILD/windows/logs" "$BUILD/windows/judged"
  QRX_JUDGE_DIR="$BUILD/windows/judged" QRX_SOURCE_DIR="$ROOT" \
    timeout "$TEST_TIMEOUT_SECONDS" "$WINE" "$BUILD/windows/bin/test_$name.exe" >"$log" 2>&1 </dev/null
  status=$?
  passed=$(tr -d '\r' <"$log" | sed -nE 's/^\[  PASSED  \] ([0-9]+) tests?\..*/\1/p')
  failed=$(tr -d '\r' <"$log" | sed -nE 's/^\[  FAILED  \] ([0-9]+) tests?, listed below.*/\1/p')
  if [ -z "$passed" ] || { [ "$status" -ne 0 ] && [ -z "$failed" ]; }; then
    failed=$((${failed:-0} + 1)) # it did not reach its end
  fi
  if [ "${failed:-0}" -gt 0 ]; then
    grep -aE '^\[  FAILED|: Failure|error:' -A6 "$log" | head -n 80
    printf '%-16s FAILED (exit status %s); whole log: %s\n' "$title" "$status" "$log"
  else
    printf '%-16s %s passed\n' "$title" "$passed"
  fi
  tests_passed=$((tests_passed + ${passed:-0}))
  tests_failed=$((tests_failed + ${failed:-0}))
}

# The windows, on a screen of their own, at the resolutions of a usual, a fine and a very fine one. What has nothing to do
# with the resolution runs once.
run_on_display() {
  local dpi filter='*'
  start_display
  for dpi in 96 144 192; do
    set_display_dpi "$dpi"
    QRX_SCREEN_DPI=$dpi GTEST_FILTER=$filter run_program "$1" "$1-${dpi}dpi"
    filter='-HandleLeakTest.*:HandleCensusTest.*:PropertyFrameTest.*'
  done
  set_display_dpi 96
  run_script "$1-mkvmux" python3 "$ROOT/tests/files/run.py" --in "$ROOT/tests/ui"
  stop_display
  run_script "$1-file" python3 "$ROOT/tests/ui/judge_settings_file.py" "$BUILD/windows/judged"
}

# run_script NAME COMMAND…: a suite that ends with a line "N passed, N failed".
run_script() {
  local name=$1 log="$BUILD/windows/logs/$1.log" line
  shift
  mkdir -p "$BUILD/windows/logs"
  timeout "$TEST_TIMEOUT_SECONDS" "$@" >"$log" 2>&1 </dev/null
  local status=$?
  line=$(grep -aE '^[0-9]+ passed, [0-9]+ failed' "$log" | tail -n 1)
  local passed=${line%% passed*} failed=${line#*passed, }
  failed=${failed%% failed*}
  if [ -z "$line" ] || { [ "$status" -ne 0 ] && [ "$failed" = 0 ]; }; then
    passed=${passed:-0}
    failed=$((${failed:-0} + 1))
  fi
  if [ "$failed" -gt 0 ]; then
    tail -n 60 "$log"
    printf '%-16s FAILED (exit status %s); whole log: %s\n' "$name" "$status" "$log"
  else
    printf '%-16s %s passed\n' "$name" "$passed"
  fi
  tests_passed=$((tests_passed + passed))
  tests_failed=$((tests_failed + failed))
}

run_suite() {
  case "$1" in
    judge)
      run_script judge python3 "$ROOT/tests/judge/judge_files.py" "$BUILD/windows/judged" \
        --mkvlayout "$WINE $BUILD/windows/bin/mkvlayout.exe"
      ;;
    judge_self)
      QRX_MKVLAYOUT="$WINE $BUILD/windows/bin/mkvlayout.exe" run_script judge_self python3 "$ROOT/tests/judge/judge_files_test.py"
      ;;
    ui) run_on_display ui ;;
    languages) run_script languages python3 "$ROOT/tests/judge/check_language_table.py" ;;
    files)
      mkdir -p "$BUILD/windows/judged"
      QRX_JUDGE_DIR="$BUILD/windows/judged" run_script files python3 "$ROOT/tests/files/run.py"
      ;;
    *)
      [ -f "$BUILD/windows/bin/test_$1.exe" ] || die "there is no suite '$1'; ./dev test list names them"
      run_program "$1"
      ;;
  esac
}

verb_test() {
  need_packages "${PACKAGES_BUILD[@]}" "${PACKAGES_JUDGES[@]}"
  build_windows
  need_wine_prefix
  local suites=("$@") suite
  if [ "${1:-}" = list ]; then
    test_programs
    printf '%s\n' "${TEST_SCRIPTS[@]}"
    return
  fi
  if [ ${#suites[@]} -eq 0 ]; then
    need_packages "${PACKAGES_DISPLAY[@]}"
    rm -rf "$BUILD/windows/judged"
    mapfile -t suites < <(test_programs)
    suites+=("${TEST_SCRIPTS[@]}")
  fi
  for suite in "${suites[@]}"; do run_suite "$suite"; done
  printf '%s passed, %s failed\n' "$tests_passed" "$tests_failed"
  [ "$tests_failed" -eq 0 ]
}
