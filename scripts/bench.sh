# ./dev bench: the muxer beside others, on Linux in one process and as whole jobs under Wine. bench/measure.py takes the
# rounds, judges and prints. Sourced by ./dev; expects `die`, `say`, $ROOT, $BUILD.

# have_room_in FOLDER: whether the files of a run find room in it.
have_room_in() {
  local free
  free=$(df -Pk "$1" 2>/dev/null | awk 'NR == 2 { print $4 }')
  [ -w "$1" ] && [ "${free:-0}" -gt $((4 << 20)) ] # 4 GB
}

# bench_folder: where the files of a run go; memory rather than a disk, whose cache would be measured too.
bench_folder() {
  local folder=/dev/shm
  have_room_in "$folder" || folder="$BUILD"
  mktemp -d "$folder/bench.XXXXXX" || die "no room for the files of a measurement"
}

build_bench_native() {
  need_native_mkv_libraries
  (fetch_source libwebm "$LIBWEBM_VERSION") || say "libwebm is left out of the comparison"
  build_preset bench bench_native >&2
}

# What our own lists of the muxer's system calls, memory and waits say; they are printed and judged by nobody.
run_bench_mux() {
  "$WINE" "$BUILD/windows/bin/bench_mux.exe" "$@"
}

verb_bench() {
  local parts=() rows=() quick=() argument
  for argument in "$@"; do
    case "$argument" in
      --quick) quick=(--quick) ;;
      native | wine) parts+=("$argument") ;;
      -*) die "usage: ./dev bench [--quick] [native|wine] [ROW…]" ;;
      *) rows+=("$argument") ;;
    esac
  done
  [ ${#parts[@]} -gt 0 ] || parts=(native wine)
  need_packages "${PACKAGES_BENCH[@]}" # ffmpeg and mkvmerge among them
  [[ " ${parts[*]} " != *" native "* ]] || build_bench_native
  if [[ " ${parts[*]} " == *" wine "* ]]; then
    build_windows bench mkvmux QRX_MKVMuxer
    need_wine_prefix
  fi
  local folder status
  folder=$(bench_folder) || exit 2
  # shellcheck disable=SC2064 # the folder of now
  trap "rm -rf '$folder'" EXIT
  /usr/bin/python3 "$ROOT/bench/measure.py" --folder "$folder" ${quick[@]+"${quick[@]}"} \
    --parts "${parts[@]}" --rows ${rows[@]+"${rows[@]}"}
  status=$?
  if [[ ${#rows[@]} -eq 0 && " ${parts[*]} " == *" wine "* ]]; then
    run_bench_mux ${quick[@]+"${quick[@]}"} || status=$?
  fi
  return "$status"
}
