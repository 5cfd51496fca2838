#!/usr/bin/env bash
# Full decode of one large JPEG: Tarnby's picture layer against ImageMagick,
# both in process (tarnby-bench-decode), plus the convert command line for
# reference. See bench/README.md.
#
#   bench/decode.sh [BUILD_DIR]
#
# Environment: W and H (6000 x 4000), REPEAT (7), CORES (2),
# BENCH_DIR (/tmp/tarnby-bench).
set -euo pipefail

W=${W:-6000}
H=${H:-4000}
REPEAT=${REPEAT:-7}
CORES=${CORES:-2}
BENCH_DIR=${BENCH_DIR:-/tmp/tarnby-bench}
HERE=$(cd "$(dirname "$0")" && pwd)
BUILD_DIR=$(cd "${1:-$HERE/../build}" && pwd)

if ! dpkg-query -W -f='${Status}' imagemagick 2>/dev/null | grep -q 'install ok installed'; then
  SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends imagemagick
fi
CONVERT=/usr/bin/convert

cmake -S "$HERE/.." -B "$BUILD_DIR" -DTARNBY_BUILD_BENCH=ON > /dev/null
ninja -C "$BUILD_DIR" tarnby-bench-decode > /dev/null

taskset -pc "0-$((CORES - 1))" $$ > /dev/null

mkdir -p "$BENCH_DIR"
PHOTO="$BENCH_DIR/decode-${W}x${H}.jpg"
if [ ! -f "$PHOTO" ]; then
  echo "Generating $PHOTO (once)..."
  "$CONVERT" -seed 7 -size "$((W / 4))x$((H / 4))" plasma:fractal -blur 0x2 \
    -resize "${W}x${H}!" -attenuate 0.5 +noise Gaussian -quality 90 "$PHOTO.tmp.jpg"
  mv "$PHOTO.tmp.jpg" "$PHOTO"
fi
cat "$PHOTO" > /dev/null

echo "Machine: $(nproc) cores, pinned to $CORES; load before: $(cut -d' ' -f1-3 /proc/loadavg)"
"$BUILD_DIR/bench/tarnby-bench-decode" "$PHOTO" "$REPEAT"
start=$(date +%s.%N)
"$CONVERT" "$PHOTO" null:
end=$(date +%s.%N)
awk -v a="$start" -v b="$end" 'BEGIN { printf "convert FILE null: (one run, with process start): %.1f ms\n", (b - a) * 1000 }'
echo "Load after: $(cut -d' ' -f1-3 /proc/loadavg)"
