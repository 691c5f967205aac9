# ./dev sanitize [thread] [SUITE…]: the portable sources and their tests on Linux, under ASan, LeakSanitizer and UBSan, or
# under ThreadSanitizer. Sourced by ./dev; expects `die`, `say`, $BUILD.

# What has threads, or is called by some: the suites that the thread sanitizer runs unless others are named.
THREAD_SUITES=(native win log dshow mux mkv matroska_muxer source_base)
# One thread alone renders hundreds of megabytes here and compares them byte by byte: minutes and gigabytes under the thread
# sanitizer, which can find nothing in it. The other lane runs them all.
NOT_UNDER_THREAD='-RenderedClusterTest.*:LargeSegmentTest.*:OwnedPacketsTest.MakeTheSameClusters*'
NOT_UNDER_THREAD+=':OwnedPacketsTest.AClusterHoldsNoMore*:ClusterBytesTest.BytesAreCopied*'

# sanitize_names KIND: the test programs of the lane.
sanitize_names() {
  ctest --test-dir "$BUILD/$1" -N | sed -nE 's/^ *Test +#[0-9]+: (.*)$/\1/p'
}

# run_ctest KIND [ARGUMENT…]: every program on its own; the last line is ctest's summary.
run_ctest() {
  local directory="$BUILD/$1" status
  shift
  # The programs carry their other options themselves (tests/native/sanitizer_options.cpp).
  ASAN_OPTIONS="detect_leaks=1${ASAN_OPTIONS:+:$ASAN_OPTIONS}" \
    ctest --test-dir "$directory" --output-on-failure --no-tests=error --parallel "$(nproc)" "$@" | tee "$directory/ctest.log"
  status=${PIPESTATUS[0]}
  grep -E '^[0-9]+% tests passed' "$directory/ctest.log"
  return "$status"
}

verb_sanitize() {
  local kind=sanitize
  if [ "${1:-}" = thread ]; then
    kind=thread
    export GTEST_FILTER="${GTEST_FILTER:-$NOT_UNDER_THREAD}"
    shift
    [ $# -gt 0 ] || set -- "${THREAD_SUITES[@]}"
  fi
  need_packages "${PACKAGES_SANITIZE[@]}"
  build_preset "$kind" help >/dev/null # configures: ctest knows the suites then
  local name pattern='' targets=()
  for name in "$@"; do
    sanitize_names "$kind" | grep -qxF "$name" ||
      die "there is no suite '$name'; these are: $(sanitize_names "$kind" | paste -sd ' ')"
    targets+=("test_$name")
    pattern="$pattern${pattern:+|}$name"
  done
  build_preset "$kind" ${targets[@]+"${targets[@]}"} >&2
  run_ctest "$kind" ${pattern:+-R "^($pattern)\$"}
}
