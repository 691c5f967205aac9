# ./dev package: what users get. Sourced by ./dev; expects `die`, `say`, $ROOT, $BUILD.

# The date of all that is packed: the last commit's, or that of whoever packs a tree without a history.
package_epoch() {
  printf '%s' "${SOURCE_DATE_EPOCH:-$(git -C "$ROOT" log -1 --format=%ct 2>/dev/null || echo 0)}"
}

verb_package() {
  case "$*" in '' | --twice) ;; *) die "usage: ./dev package [--twice]" ;; esac
  need_packages "${PACKAGES_BUILD[@]}" "${PACKAGES_PACKAGE[@]}"
  need_mkv_libraries
  export SOURCE_DATE_EPOCH
  SOURCE_DATE_EPOCH=$(package_epoch)
  build_preset package QRX_MKVMuxer mkvmux >&2
  python3 "$ROOT/packaging/build_package.py" "$BUILD/package" "$DEPS" "$BUILD/package/out" || die "the package cannot be made"
  say "packed: $BUILD/package/out"
  [ "${1:-}" != --twice ] || "$ROOT/packaging/check_reproducible.sh" "$BUILD/package/out"
}
