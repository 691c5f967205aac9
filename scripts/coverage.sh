# ./dev coverage [SUITE…]: which lines and branches of the portable sources the Linux lane's tests reach, a row for each
# folder, and each line with its count in build/coverage/html. Sourced by ./dev; expects `die`, `say`, $ROOT, $BUILD.

COVERAGE_FOLDERS='win|log|codecs|dshow|media|records|mux|mkv|matroska_muxer|client|sources/[a-z]+'

verb_coverage() {
  need_packages "${PACKAGES_SANITIZE[@]}" "${PACKAGES_COVERAGE[@]}"
  local out="$BUILD/coverage" name pattern='' targets=() status=0
  for name in "$@"; do
    targets+=("test_$name")
    pattern="$pattern${pattern:+|}$name"
  done
  build_preset coverage ${targets[@]+"${targets[@]}"} >&2
  find "$out" -name '*.gcda' -delete
  run_ctest coverage ${pattern:+-R "^($pattern)\$"} >&2 || status=$? # what failed is told, and what ran is counted
  mkdir -p "$out/html"
  # Branches that only an exception takes are left out: nobody wrote them, and each call has some.
  (cd "$ROOT" && /usr/bin/gcovr --root "$ROOT" --object-directory "$out" --filter "$ROOT/($COVERAGE_FOLDERS)/" \
    --exclude-throw-branches --exclude-unreachable-branches --json-summary "$out/summary.json" \
    --html-details "$out/html/index.html" "$out" >"$out/gcovr.log" 2>&1) || die "gcovr failed; see $out/gcovr.log"
  /usr/bin/python3 "$ROOT/scripts/coverage_table.py" "$out/summary.json"
  say "each line: $out/html/index.html"
  return "$status"
}
