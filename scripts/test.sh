# ./dev test: every GoogleTest program under Wine, whole files through mkvmux, and the judges.
# Sourced by ./dev; expects `die`, `say`, $ROOT, $BUILD.

TEST_TIMEOUT_SECONDS=3600 # a watchdog, far beyond what a loaded machine needs
tests_passed=0
tests_failed=0

# Test programs by name, then the suites that are scripts.
test_programs() {
  local file
  for file in "$BUILD"/windows/bin/test_*.exe; do
    [ -f "$file" ] && file=${file##*/test_} && printf '%s\n' "${file%.exe}"
  done
}
TEST_SCRIPTS=(files encoders players types judge_self languages judge) # the judge comes after all that writes files
TEST_SCRIPTS_AT_ONCE=2

# report_crash LOG: the test that ran last, and what the program itself could say (tests/support/crash_report.cpp).
report_crash() {
  local running
  running=$(tr -d '\r' <"$1" | sed -nE 's/^\[ RUN      \] (.*)/\1/p; s/^\[       OK \] .*//p; s/^\[  FAILED  \] .*//p' | tail -n 1)
  [ -n "$running" ] && printf 'error: it ended during %s\n' "$running"
  tr -d '\r' <"$1" | grep -aE '^(crash: |wine: |terminate called|.*what\(\):|Assertion failed)' | head -n 60
  name_places "$1" "$2"
}

# name_places LOG PROGRAM: the functions and lines of the program's own addresses.
name_places() {
  local addresses
  mapfile -t addresses < <(tr -d '\r' <"$1" | sed -nE "s/^crash: .*${2##*/}\+.*\((0x[0-9a-f]+)\)\$/\1/p" | head -n 20)
  [ ${#addresses[@]} -gt 0 ] || return 0
  x86_64-w64-mingw32-addr2line -Cfpse "$2" "${addresses[@]}"
}

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
    report_crash "$log" "$BUILD/windows/bin/test_$name.exe"
  elif [ "$passed" -eq 0 ] && [ -z "${failed:-}${GTEST_FILTER:-}" ]; then
    failed=1
    echo 'error: it has no tests'
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
    filter='-PageCallers.*:HandleLeakTest.*:HandleCensusTest.*:PropertyFrameTest.*'
  done
  set_display_dpi 96
  run_script "$1-mkvmux" python3 "$ROOT/tests/whole_files/run.py" "$ROOT/tests/ui"
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
    printf '%-16s %s passed%s\n' "$name" "$passed" "$(sed -nE 's/^[0-9]+ passed, [0-9]+ failed(, [0-9]+ skipped)$/\1/p' <<<"$line")"
    grep -a '^skipped: ' "$log"
  fi
  tests_passed=$((tests_passed + passed))
  tests_failed=$((tests_failed + failed))
}

run_suite() {
  case "$1" in
    judge)
      run_script judge python3 "$ROOT/tests/judge/judge_files.py" "$BUILD/windows/judged" \
        --mkvlayout "$WINE $BUILD/windows/bin/mkvlayout.exe" ${whole:+--whole}
      ;;
    judge_self)
      QRX_MKVLAYOUT="$WINE $BUILD/windows/bin/mkvlayout.exe" run_script judge_self python3 "$ROOT/tests/judge/judge_files_test.py"
      ;;
    ui) run_on_display ui ;;
    languages) run_script languages python3 "$ROOT/tests/judge/check_language_table.py" ;;
    players)
      need_packages "${PACKAGES_PLAYERS[@]}"
      mkdir -p "$BUILD/windows/judged"
      QRX_JUDGE_DIR="$BUILD/windows/judged" run_script players python3 "$ROOT/tests/whole_files/run.py" "$ROOT/tests/players"
      ;;
    encoders | encoders-full)
      mkdir -p "$BUILD/windows/judged"
      QRX_ENCODERS_FULL=${1#encoders} QRX_JUDGE_DIR="$BUILD/windows/judged" \
        run_script "$1" python3 "$ROOT/tests/whole_files/run.py" "$ROOT/tests/encoders"
      ;;
    types | package) # package makes one first, which takes minutes; it runs by its name alone
      need_packages "${PACKAGES_PACKAGE[@]}"
      local modules=(test_type_library)
      [ "$1" = types ] || modules=(test_package test_installed test_outside)
      run_script "$1" python3 "$ROOT/tests/whole_files/run.py" "$ROOT/tests/package" "${modules[@]}"
      ;;
    files)
      mkdir -p "$BUILD/windows/judged"
      QRX_JUDGE_DIR="$BUILD/windows/judged" run_script files python3 "$ROOT/tests/whole_files/run.py" "$ROOT/tests/files"
      ;;
    *)
      [ -f "$BUILD/windows/bin/test_$1.exe" ] || die "there is no suite '$1'; ./dev test list names them"
      run_program "$1"
      ;;
  esac
}

# run_side_by_side SUITE…: suites that are scripts mostly wait for the programs that they start. Each prints what it has
# to say when it is done.
run_side_by_side() {
  local suite passed failed results="$BUILD/windows/logs/results"
  rm -rf "$results"
  mkdir -p "$results"
  for suite in "$@"; do
    while [ "$(jobs -rp | wc -l)" -ge "$TEST_SCRIPTS_AT_ONCE" ]; do wait -n; done
    {
      tests_passed=0 tests_failed=0
      run_suite "$suite"
      printf '%s %s\n' "$tests_passed" "$tests_failed" >"$results/$suite.count"
    } >"$results/$suite.out" 2>&1 &
  done
  wait
  for suite in "$@"; do
    cat "$results/$suite.out"
    passed=0 failed=1 # of a suite that did not reach its end
    [ -f "$results/$suite.count" ] && read -r passed failed <"$results/$suite.count"
    tests_passed=$((tests_passed + passed))
    tests_failed=$((tests_failed + failed))
  done
}

run_all_suites() {
  local suite scripts=("${TEST_SCRIPTS[@]}")
  rm -rf "$BUILD/windows/judged"
  for suite in $(test_programs); do run_suite "$suite"; done
  unset 'scripts[-1]'
  run_side_by_side "${scripts[@]}"
  whole=1 # every file is there
  run_suite judge
}

verb_test() {
  need_packages "${PACKAGES_BUILD[@]}" "${PACKAGES_JUDGES[@]}"
  build_windows
  need_wine_prefix
  local suites=("$@") suite whole=
  if [ "${1:-}" = list ]; then
    test_programs
    printf '%s\n' "${TEST_SCRIPTS[@]}"
    return
  fi
  if [ ${#suites[@]} -eq 0 ]; then
    need_packages "${PACKAGES_DISPLAY[@]}" "${PACKAGES_PLAYERS[@]}" "${PACKAGES_PACKAGE[@]}"
    run_all_suites
  else
    for suite in "${suites[@]}"; do run_suite "$suite"; done
  fi
  printf '%s passed, %s failed\n' "$tests_passed" "$tests_failed"
  if [ $((tests_passed + tests_failed)) -eq 0 ]; then
    say "no test ran${GTEST_FILTER:+: none has a name like GTEST_FILTER=$GTEST_FILTER}"
    return 1
  fi
  [ "$tests_failed" -eq 0 ]
}
