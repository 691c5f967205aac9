# ./dev fuzz [TARGET…] [SECONDS]: the fuzzers, as many at a time as there are processors, each with a bound on memory and
# on the time of one input. ./dev fuzz TARGET FILE: one input once more. fuzz/README.md says what each looks for.
# Sourced by ./dev; expects `die`, `say`, $ROOT, $BUILD.

FUZZ_SECONDS=60
FUZZ_MEMORY_MIB=512
FUZZ_TARGETS=(
  matroska avi annexb av1 text chapters repair report
  configuration format_blocks track_entry parameter_sets annexb_payload settings_xml schedule
)

# How long one input may take, and be: a stall of a schedule lasts two seconds, and its script is short.
fuzz_input_seconds() { if [ "$1" = schedule ]; then echo 60; else echo 5; fi; }
fuzz_input_bytes() { if [ "$1" = schedule ]; then echo 2048; else echo 65536; fi; }

# fuzz_program TARGET ARGUMENT…: one fuzzer with its bounds; its answer is its exit status.
fuzz_program() {
  local target=$1
  shift
  ASAN_OPTIONS="detect_leaks=1:allocator_may_return_null=1${ASAN_OPTIONS:+:$ASAN_OPTIONS}" "$BUILD/fuzz/bin/fuzz_$target" \
    -rss_limit_mb="$FUZZ_MEMORY_MIB" -timeout="$(fuzz_input_seconds "$target")" -max_len="$(fuzz_input_bytes "$target")" "$@"
}

# fuzz_one TARGET SECONDS: what is found lies in $BUILD/fuzz/findings; what is learnt stays in $BUILD/fuzz/corpus, and the
# corpus that the tree keeps as it is.
fuzz_one() {
  local target=$1 corpus="$BUILD/fuzz/corpus/$1" kept="$BUILD/fuzz/kept/$1" log="$BUILD/fuzz/$1.log" found
  mkdir -p "$corpus" "$kept" "$BUILD/fuzz/findings"
  fuzz_program "$target" -max_total_time="$2" -print_final_stats=1 -artifact_prefix="$BUILD/fuzz/findings/$target-" \
    "$corpus" "$kept" "$BUILD/fuzz/seeds/$target" >"$log" 2>&1 && {
    printf '%-14s nothing found in %s runs\n' "$target" "$(sed -nE 's/^stat::number_of_executed_units: *//p' "$log")"
    return
  }
  found=$(sed -nE 's/.*Test unit written to (.*)$/\1/p' "$log" | tail -n 1)
  {
    grep -aE 'ERROR|SUMMARY' "$log"
    printf "%-14s FOUND SOMETHING; the whole log: %s\n" "$target" "$log"
    [ -n "$found" ] && printf '  the input: %s\n  once more: ./dev fuzz %s %s\n' "$found" "$target" "$found"
  } >&2
  return 1
}

# fuzz_all SECONDS TARGET…: as many at a time as there are processors; fails when one found something.
fuzz_all() {
  local seconds=$1 target running=0 failed=0
  shift
  for target in "$@"; do
    if [ "$running" -ge "$(nproc)" ]; then
      wait -n || failed=1
      running=$((running - 1))
    fi
    fuzz_one "$target" "$seconds" &
    running=$((running + 1))
  done
  for (( ; running > 0; running--)); do wait -n || failed=1; done
  [ "$failed" = 0 ] || die "a fuzzer found something"
}

# fuzz_self_check: what goes wrong in a program made for it is told, each by its name.
fuzz_self_check() {
  local fault name status input="$BUILD/fuzz/misbehaving.input" log="$BUILD/fuzz/misbehaving.log"
  mkdir -p "$BUILD/fuzz/findings"
  for fault in 'l:LeakSanitizer: detected memory leaks' 'h:libFuzzer: timeout' 'm:libFuzzer: out-of-memory \(used' \
    'a:libFuzzer: out-of-memory \(malloc' 'r:heap-buffer-overflow' 'n:'; do
    name=${fault#*:}
    printf '%s' "${fault%%:*}" >"$input"
    fuzz_program misbehaving -timeout="$([ "$name" = 'libFuzzer: timeout' ] && echo 1 || echo 60)" -artifact_prefix="$BUILD/fuzz/misbehaving-" "$input" >"$log" 2>&1
    status=$?
    if [ -z "$name" ]; then
      [ "$status" = 0 ] || die "the fuzzers find fault with nothing; see $log"
    elif [ "$status" = 0 ] || ! grep -aqE "$name" "$log"; then
      die "the fuzzers do not tell '$name'; see $log"
    fi
  done
  say "leaks, timeouts, too much memory and wild reads are told"
}

verb_fuzz() {
  need_packages "${PACKAGES_SANITIZE[@]}" "${PACKAGES_FUZZ[@]}"
  local targets=() seconds=$FUZZ_SECONDS input='' argument
  for argument in "$@"; do
    if [[ $argument =~ ^[0-9]+$ ]]; then
      seconds=$argument
    elif [ ${#targets[@]} -gt 0 ] && [ -f "$argument" ]; then
      input=$argument
    else
      printf '%s\n' "${FUZZ_TARGETS[@]}" | grep -qxF "$argument" ||
        die "there is no fuzzer '$argument'; these are: ${FUZZ_TARGETS[*]}"
      targets+=("$argument")
    fi
  done
  [ ${#targets[@]} -gt 0 ] || targets=("${FUZZ_TARGETS[@]}")
  build_preset fuzz "${targets[@]/#/fuzz_}" fuzz_misbehaving >&2
  if [ -n "$input" ]; then
    fuzz_program "${targets[0]}" "$input"
    return
  fi
  python3 "$ROOT/fuzz/make_seeds.py" "$BUILD/fuzz/seeds" || die "the seeds cannot be made"
  python3 "$ROOT/fuzz/corpus.py" unpack "$BUILD/fuzz/kept" || die "the corpora that are kept cannot be unpacked"
  fuzz_self_check
  fuzz_all "$seconds" "${targets[@]}"
}
