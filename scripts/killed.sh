# ./dev killed [N] [SEED]: N runs of the tool that are killed at moments drawn from the seed; what had reached the file is
# recovered by other programs. Sourced by ./dev; expects $ROOT, $BUILD.

KILLS=100

verb_killed() {
  need_packages "${PACKAGES_BUILD[@]}" "${PACKAGES_JUDGES[@]}"
  build_windows
  need_wine_prefix
  QRX_KILLS=${1:-$KILLS} QRX_KILL_SEED=${2:-} \
    python3 "$ROOT/tests/whole_files/run.py" "$ROOT/tests/files" test_killed_run.RandomMoments
}
