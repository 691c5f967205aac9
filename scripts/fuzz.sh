# ./dev fuzz [TARGET] [SECONDS]: the fuzzers, each with a bound on memory and on the time of one input.
# Sourced by ./dev; expects `die`, `say`, $ROOT, $BUILD.

FUZZ_SECONDS=60
FUZZ_INPUT_SECONDS=5
FUZZ_MEMORY_MIB=512
FUZZ_TARGETS=(matroska avi annexb text configuration format_blocks)

# fuzz_one TARGET SECONDS: what was found lies in $BUILD/fuzz/findings; what was learnt stays in the corpus.
fuzz_one() {
  local corpus="$BUILD/fuzz/corpus/$1" log="$BUILD/fuzz/$1.log"
  mkdir -p "$corpus" "$BUILD/fuzz/findings"
  say "fuzzing $1 for $2 s"
  ASAN_OPTIONS="detect_leaks=1:allocator_may_return_null=1${ASAN_OPTIONS:+:$ASAN_OPTIONS}" "$BUILD/fuzz/bin/fuzz_$1" \
    -max_total_time="$2" -rss_limit_mb="$FUZZ_MEMORY_MIB" -timeout="$FUZZ_INPUT_SECONDS" -max_len=65536 -print_final_stats=1 \
    -artifact_prefix="$BUILD/fuzz/findings/$1-" "$corpus" "$BUILD/fuzz/seeds/$1" >"$log" 2>&1 ||
    { grep -aE 'ERROR|SUMMARY|Test unit written' "$log" >&2; die "the fuzzer of '$1' found something; its whole log is $log"; }
  printf '%-14s nothing found in %s runs\n' "$1" "$(sed -nE 's/^stat::number_of_executed_units: *//p' "$log")"
}

verb_fuzz() {
  need_packages "${PACKAGES_SANITIZE[@]}" "${PACKAGES_FUZZ[@]}"
  local targets=("${FUZZ_TARGETS[@]}") target
  if [[ ${1:-} =~ [^0-9] ]]; then
    targets=("$1")
    shift
  fi
  for target in "${targets[@]}"; do
    printf '%s\n' "${FUZZ_TARGETS[@]}" | grep -qxF "$target" || die "there is no fuzzer '$target'; these are: ${FUZZ_TARGETS[*]}"
  done
  build_preset fuzz "${targets[@]/#/fuzz_}" >&2
  python3 "$ROOT/fuzz/make_seeds.py" "$BUILD/fuzz/seeds" || die "the seeds cannot be made"
  for target in "${targets[@]}"; do fuzz_one "$target" "${1:-$FUZZ_SECONDS}"; done
}
