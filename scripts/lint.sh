# ./dev lint and ./dev format. Sourced by ./dev; expects `die`, `say`, $ROOT, $BUILD.

source_files() { git -C "$ROOT" ls-files -- '*.cpp' '*.h' "$@"; }

verb_format() {
  need_packages "${PACKAGES_LINT[@]}"
  (cd "$ROOT" && source_files | xargs -r clang-format -i)
}

# clang-tidy reads the cross build's compile commands, with the compiler's own headers named for clang. They come from
# a configuration of their own, without precompiled headers: those are GCC's, and clang cannot read them.
tidy_one() {
  clang-tidy --quiet -p "$BUILD/lint" \
    --extra-arg=--target=x86_64-w64-mingw32 \
    --extra-arg=-isystem/usr/lib/gcc/x86_64-w64-mingw32/12-posix/include/c++ \
    --extra-arg=-isystem/usr/lib/gcc/x86_64-w64-mingw32/12-posix/include/c++/x86_64-w64-mingw32 \
    "$1" 2>/dev/null
}

verb_lint() {
  need_packages "${PACKAGES_BUILD[@]}" "${PACKAGES_LINT[@]}"
  (cd "$ROOT" && source_files | xargs -r clang-format --dry-run -Werror) || die "some files are not formatted: ./dev format"
  need_mkv_libraries
  (cd "$ROOT" && cmake --preset windows -B "$BUILD/lint" -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON) >"$BUILD/lint-configure.log" 2>&1 ||
    die "CMake cannot configure the lint; see $BUILD/lint-configure.log"
  say "clang-tidy"
  export -f tidy_one
  export BUILD
  local sources
  sources=$(source_files | grep -E '\.cpp$' | grep -vE '^(tests|bench|fuzz)/')
  (cd "$ROOT" && printf '%s\n' "$sources" | xargs -P "$(nproc)" -I{} bash -c 'tidy_one {}') || die "clang-tidy found something"
  say "lint is clean"
}
