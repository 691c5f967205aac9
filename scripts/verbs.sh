# The verbs of ./dev that need no file of their own. Sourced by ./dev.

verb_help() {
  cat <<'HELP'
usage: ./dev VERB [ARGUMENT…]     each verb installs what it lacks (root or sudo)

  demo            make a real AVI, mux it with the registered module, show tracks and layout
  test [NAME…]    build and run all tests, or the named suites (./dev test list names them)
  mkvmux ARG…     run the command-line tool under Wine, with Linux paths
  example IN OUT COVER  run examples/mux_wave.cpp: a WAVE file with a cover into a Matroska file
  build           build the module, the tool, the tests and the benchmarks into build/windows/bin
  package [--twice] what users get: zip, installer, symbols, into build/package/out; --twice: once more in another
                  folder, and both are compared
  build --compiler clang
                  the same with clang, for the same target, into build/windows-clang/bin
  sanitize        the same sources and tests on Linux under ASan, leak check and UBSan; sanitize thread: under
                  ThreadSanitizer, what has threads
  coverage [NAME…] lines and branches that the tests on Linux reach, a row a folder
  mutants FOLDER [MAX [SEED]]
                  change lines of a folder, one at a time, and list what no test notices
  fuzz [NAME…] [N] the fuzzers, N seconds each; fuzz NAME FILE: one input once more
  killed [N] [SEED]  N runs of the tool that are killed at random moments, and what is recovered of them
  storm [N] [wine|sanitize|thread]
                  N rounds (1000) of everything at once, in each lane, each within ten seconds
  day [HOURS]     a recording of so many hours (24), as fast as it goes, read block by block
  bench [--quick] [native|wine] [ROW…]
                  the muxer beside others: native on Linux, wine whole jobs of the tool; printed as tables
  screenshots     pictures of the property pages, into docs/images
  lint            clang-format (check only) and clang-tidy
  format          clang-format, in place
HELP
}

verb_build() {
  if [ "${1:-}" = --compiler ]; then
    case "${2:-}" in
      gcc) shift 2 ;;
      clang)
        shift 2
        build_clang "$@"
        return
        ;;
      *) die "usage: ./dev build [--compiler gcc|clang] [TARGET…]" ;;
    esac
  fi
  build_windows "$@"
  say "built: $BUILD/windows/bin"
}

# Only the set-up: packages, libraries, Wine prefix.
verb_deps() {
  need_packages "${PACKAGES_BUILD[@]}"
  need_mkv_libraries
  need_wine_prefix
}
