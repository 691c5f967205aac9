#!/usr/bin/env bash
# Packs a copy of this tree in another folder and compares: check_reproducible.sh PACKED, a folder that ./dev package made
# of this tree with the same SOURCE_DATE_EPOCH. ./dev package --twice calls it.
set -euo pipefail
packed=$1
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
copy=$(mktemp -d -t qrx_another_place_XXXXXX)
trap 'rm -rf "$copy"' EXIT
(cd "$root" && git ls-files -z --cached --others --exclude-standard | xargs -0 cp --parents -t "$copy")
# Sources that were fetched need not be fetched again; everything is compiled anew.
mkdir -p "$copy/build/deps"
cp -a "$root/build/deps/src" "$copy/build/deps/"
"$copy/dev" package
if ! diff -rq "$packed" "$copy/build/package/out"; then
  echo "check_reproducible.sh: the packages differ; see above" >&2
  exit 1
fi
echo "the same bytes in $packed and in another folder:"
cat "$packed/SHA256SUMS"
