# Configuring and building. Sourced by ./dev; expects `die`, `say`, $ROOT, $BUILD.

# build_preset NAME [TARGET…]: configures when needed and builds.
build_preset() {
  local preset=$1
  shift
  if [ ! -f "$BUILD/$preset/build.ninja" ]; then
    (cd "$ROOT" && cmake --preset "$preset") >"$BUILD/$preset-configure.log" 2>&1 ||
      { tail -n 40 "$BUILD/$preset-configure.log" >&2; die "CMake cannot configure '$preset'"; }
  fi
  local targets=(${@+"$@"})
  [ ${#targets[@]} -eq 0 ] && targets=(all)
  cmake --build "$BUILD/$preset" --target "${targets[@]}" || die "the build of '$preset' failed"
}

# build_windows [TARGET…]: the cross build, with all that it needs.
build_windows() {
  need_packages "${PACKAGES_BUILD[@]}"
  need_mkv_libraries
  build_preset windows "$@" >&2
}

# build_clang [TARGET…]: the same by clang, which warns of other things; headers, runtime and linker are those of GCC.
build_clang() {
  need_packages "${PACKAGES_BUILD[@]}" "${PACKAGES_CLANG[@]}"
  need_mkv_libraries
  build_preset windows-clang "$@" >&2
  say "built: $BUILD/windows-clang/bin"
}
