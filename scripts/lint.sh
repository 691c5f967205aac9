# ./dev lint and ./dev format. Sourced by ./dev; expects `die`, `say`, $ROOT, $BUILD.

source_files() { git -C "$ROOT" ls-files -- '*.cpp' '*.h' "$@"; }

verb_format() {
  need_packages "${PACKAGES_LINT[@]}"
  (cd "$ROOT" && source_files | xargs -r clang-format -i)
}

# clang-tidy reads the cross build's compile commands, with the compiler's own headers named for clang. They come from
# a configuration of their own: without precompiled headers, which are GCC's, and with all sources of a folder in one,
# since clang-tidy looks at every declaration of every header that a source includes.
tidy_one() {
  clang-tidy --quiet -p "$BUILD/lint" \
    --extra-arg=--target=x86_64-w64-mingw32 --extra-arg=-Wthread-safety \
    --extra-arg=-isystem/usr/lib/gcc/x86_64-w64-mingw32/12-posix/include/c++ \
    --extra-arg=-isystem/usr/lib/gcc/x86_64-w64-mingw32/12-posix/include/c++/x86_64-w64-mingw32 \
    "$1" 2>/dev/null
}

# The product's sources, as the lint's configuration compiles them.
linted_sources() {
  sed -nE "s|^ *\"file\": \"$ROOT/(.*)\",?\$|\1|p" "$BUILD/lint/compile_commands.json" |
    grep -E '\.(cpp|cxx)$' | grep -vE '(^|/)(tests|bench|fuzz|googletest)/|/precompiled\.cpp$' | sed "s|^|$ROOT/|"
}

verb_lint() {
  need_packages "${PACKAGES_BUILD[@]}" "${PACKAGES_LINT[@]}"
  (cd "$ROOT" && source_files | xargs -r clang-format --dry-run -Werror) || die "some files are not formatted: ./dev format"
  local rules
  for rules in includes style; do
    python3 "$ROOT/scripts/lint_$rules.py" "$ROOT" >&2 || die "the rules of docs/style.md are not kept"
  done
  need_mkv_libraries
  (cd "$ROOT" && cmake --preset windows -B "$BUILD/lint" -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
    -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=0) >"$BUILD/lint-configure.log" 2>&1 ||
    die "CMake cannot configure the lint; see $BUILD/lint-configure.log"
  say "clang-tidy"
  export -f tidy_one
  export BUILD
  local sources
  sources=$(linted_sources)
  [ -n "$sources" ] || die "there is nothing to lint in $BUILD/lint"
  printf '%s\n' "$sources" | xargs -P "$(nproc)" -I{} bash -c 'tidy_one {}' || die "clang-tidy found something"
  say "lint is clean"
}
