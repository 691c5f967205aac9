# ./dev mutants FOLDER [MAX [SEED]]: changes a line at a time; the tests must notice. Debian packages no tool that does it
# for C++. Sourced by ./dev; expects `die`, `say`, $ROOT, $BUILD.

# copy_tree TO: what belongs to the project; only what differs is written, so that builds of the copy stay incremental.
copy_tree() {
  mkdir -p "$1"
  (cd "$ROOT" && git ls-files -z --cached --others --exclude-standard) | while IFS= read -r -d '' file; do
    [ -f "$ROOT/$file" ] || continue
    cmp -s "$ROOT/$file" "$1/$file" && continue
    mkdir -p "$(dirname "$1/$file")"
    cp "$ROOT/$file" "$1/$file" || return 1
  done
}

verb_mutants() {
  [[ $# -ge 1 && $# -le 3 && ! "${2:-}${3:-}" =~ [^0-9] ]] || die "usage: ./dev mutants FOLDER [MAX [SEED]]"
  need_packages "${PACKAGES_SANITIZE[@]}" python3
  local tree="$BUILD/mutants/tree"
  copy_tree "$tree" || die "the tree cannot be copied to $tree"
  if [ ! -f "$tree/build/mutants/build.ninja" ]; then
    (cd "$tree" && cmake --preset mutants) >"$BUILD/mutants/configure.log" 2>&1 ||
      die "CMake cannot configure the copy; see $BUILD/mutants/configure.log"
  fi
  nice -n 15 /usr/bin/python3 "$ROOT/scripts/mutants.py" "$tree" "$tree/build/mutants" "$@"
}
