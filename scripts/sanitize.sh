# ./dev sanitize: the portable sources and their tests on Linux, under ASan, LeakSanitizer and UBSan.
# Sourced by ./dev; expects `die`, `say`, $BUILD.

SANITIZE_DIR="$BUILD/sanitize"

# sanitize_names: the test programs of the lane.
sanitize_names() {
  ctest --test-dir "$SANITIZE_DIR" -N | sed -nE 's/^ *Test +#[0-9]+: (.*)$/\1/p'
}

# run_ctest [ARGUMENT…]: every program on its own; the last line is ctest's summary.
run_ctest() {
  local log="$SANITIZE_DIR/ctest.log" status
  # The programs carry their other options themselves (tests/native/sanitizer_options.cpp).
  ASAN_OPTIONS="detect_leaks=1${ASAN_OPTIONS:+:$ASAN_OPTIONS}" \
    ctest --test-dir "$SANITIZE_DIR" --output-on-failure --no-tests=error --parallel "$(nproc)" "$@" | tee "$log"
  status=${PIPESTATUS[0]}
  grep -E '^[0-9]+% tests passed' "$log"
  return "$status"
}

verb_sanitize() {
  need_packages "${PACKAGES_SANITIZE[@]}"
  build_preset sanitize help >/dev/null # configures: ctest knows the suites then
  local name pattern='' targets=()
  for name in "$@"; do
    sanitize_names | grep -qxF "$name" || die "there is no suite '$name'; these are: $(sanitize_names | paste -sd ' ')"
    targets+=("test_$name")
    pattern="$pattern${pattern:+|}$name"
  done
  build_preset sanitize ${targets[@]+"${targets[@]}"} >&2
  run_ctest ${pattern:+-R "^($pattern)\$"}
}
