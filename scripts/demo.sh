# ./dev demo: a real AVI through the registered module, judged by programs that nobody here wrote.
# Sourced by ./dev; expects `die`, `say`, $BUILD.

DEMO_SECONDS=10

demo_title() { printf '\n== %s\n' "$*"; }

# make_demo_avi FILE VIDEO-OPTION…: that video and PCM audio, by ffmpeg's encoders.
make_demo_avi() {
  local file=$1
  shift
  ffmpeg -v error -nostdin -y \
    -f lavfi -i "testsrc=size=320x240:rate=25:duration=$DEMO_SECONDS" \
    -f lavfi -i "sine=frequency=440:sample_rate=44100:duration=$DEMO_SECONDS" \
    "$@" -c:a pcm_s16le "$file" || die "ffmpeg cannot make $file"
}

# packet_hashes FILE STREAM: size and hash of each packet of one stream, in order.
packet_hashes() {
  ffmpeg -v error -nostdin -i "$1" -map "0:$2" -c copy -f framehash -hash md5 - 2>/dev/null |
    sed -nE '/^#/d; s/^([^,]*,){4} *([0-9]+), *([0-9a-f]+).*/\2 \3/p'
}

# compare_streams AVI MKV STREAM NAME: the packets of one stream, one by one.
compare_streams() {
  local before after count
  before=$(packet_hashes "$1" "$3")
  after=$(packet_hashes "$2" "$3")
  count=$(printf '%s\n' "$before" | grep -c .)
  [ "$count" -gt 0 ] || die "ffmpeg finds no packet in stream $3 of $1"
  [ "$before" = "$after" ] || die "the $4 packets of $2 differ from those of $1"
  printf '%s: %s packets, every size and MD5 is the same in the AVI and in the Matroska file\n' "$4" "$count"
}

# mux_demo AVI MKV
mux_demo() {
  demo_title "mkvmux -o ${2##*/} ${1##*/}"
  "$WINE" "$BUILD/windows/bin/mkvmux.exe" -y -o "$2" "$1" || die "mkvmux failed with exit status $?"
}

# judge_demo AVI MKV: decodes the result and compares its packets with those of the AVI.
judge_demo() {
  local errors
  demo_title "ffmpeg decodes ${2##*/}"
  errors=$(ffmpeg -v error -xerror -nostdin -i "$2" -f null - 2>&1) && [ -z "$errors" ] ||
    die "ffmpeg finds errors in $2: $errors"
  echo "without an error"
  demo_title "packets before and after"
  compare_streams "$1" "$2" 0 video
  compare_streams "$1" "$2" 1 audio
}

# The module's registration, taken back when the demo is over.
register_module() { "$WINE" regsvr32 /s "$(windows_path "$BUILD/windows/bin/QRX_MKVMuxer.ax")"; }
unregister_module() { "$WINE" regsvr32 /s /u "$(windows_path "$BUILD/windows/bin/QRX_MKVMuxer.ax")"; }

verb_demo() {
  need_packages "${PACKAGES_JUDGES[@]}"
  build_windows mkvmux QRX_MKVMuxer
  need_wine_prefix
  local dir="$BUILD/demo"
  mkdir -p "$dir"
  make_demo_avi "$dir/demo.avi" -c:v cinepak
  # The system's splitter in Wine streams uncompressed video alone; for Cinepak mkvmux has a reader of its own.
  make_demo_avi "$dir/uncompressed.avi" -c:v rawvideo -pix_fmt yuv420p

  demo_title "regsvr32 QRX_MKVMuxer.ax"
  register_module || die "the module cannot be registered"
  trap unregister_module EXIT
  echo "registered in $WINEPREFIX"

  mux_demo "$dir/demo.avi" "$dir/demo.mkv"
  demo_title "mkvinfo demo.mkv: tracks"
  mkvinfo "$dir/demo.mkv" | sed -n '/^|+ Tracks/,/^|+ Cluster/p' | grep -v '^|+ Cluster'
  demo_title "mkvinfo demo.mkv: layout"
  mkvinfo -v -v -p "$dir/demo.mkv" | grep -E '^(\+|\|\+|\| \+ Seek entry|\|  \+ Seek)'
  judge_demo "$dir/demo.avi" "$dir/demo.mkv"

  mux_demo "$dir/uncompressed.avi" "$dir/uncompressed.mkv"
  judge_demo "$dir/uncompressed.avi" "$dir/uncompressed.mkv"
  printf '\nThe files: %s %s\n' "$dir/demo.mkv" "$dir/uncompressed.mkv"
}
