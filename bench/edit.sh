#!/usr/bin/env bash
# Picture operations on a 24-megapixel photo, decode and encode included:
# tarnby-cli convert against ImageMagick's convert and, where installed,
# vips, one run each; then the operations alone and their undo in process
# (tarnby-bench-edit). See bench/README.md.
#
#   bench/edit.sh [BUILD_DIR]
#
# Environment: W and H (6000 x 4000), REPEAT (5, in process), CORES (2),
# BENCH_DIR (/tmp/tarnby-bench).
set -euo pipefail

W=${W:-6000}
H=${H:-4000}
REPEAT=${REPEAT:-5}
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
VIPS=$(command -v vips || true)

cmake -S "$HERE/.." -B "$BUILD_DIR" -DTARNBY_BUILD_BENCH=ON > /dev/null
ninja -C "$BUILD_DIR" tarnby-cli tarnby-bench-edit > /dev/null
CLI="$BUILD_DIR/src/cli/tarnby-cli"

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
OUT="$BENCH_DIR/edit-out.jpg"

# Milliseconds that the command takes, once.
time_ms() {
  local start end
  start=$(date +%s.%N)
  "$@" > /dev/null 2>&1 || { echo "failed: $*" >&2; echo "nan"; return; }
  end=$(date +%s.%N)
  awk -v a="$start" -v b="$end" 'BEGIN { printf "%.0f", (b - a) * 1000 }'
}

echo "Machine: $(nproc) cores, pinned to $CORES; load before: $(cut -d' ' -f1-3 /proc/loadavg)"
echo "Photo: $PHOTO (${W}x${H}); JPEG out at quality 90; one run each, process start included"
printf "%-26s %10s %10s %10s %10s %10s\n" operation tarnby-ms convert-ms vips-ms vs-convert vs-vips
run() {
  local name=$1 tarnby=$2 magick=$3 vips=$4
  local t m v=nan
  # shellcheck disable=SC2086
  t=$(time_ms "$CLI" convert --quality 90 "$PHOTO" "$OUT" $tarnby)
  # shellcheck disable=SC2086
  m=$(time_ms "$CONVERT" "$PHOTO" $magick -quality 90 "$OUT")
  if [ -n "$VIPS" ] && [ -n "$vips" ]; then
    # shellcheck disable=SC2086
    v=$(time_ms "$VIPS" $vips)
  fi
  awk -v n="$name" -v t="$t" -v m="$m" -v v="$v" 'BEGIN {
    rm = (m == "nan" || m == 0) ? "-" : sprintf("%.2f", t / m)
    rv = (v == "nan" || v == 0) ? "-" : sprintf("%.2f", t / v)
    printf "%-26s %10s %10s %10s %10s %10s\n", n, t, m, v, rm, rv }'
}
run "flip"                      "--flip"                      "-flip"                          "flip $PHOTO $OUT[Q=90] vertical"
run "invert"                    "--invert"                    "-negate"                        "invert $PHOTO $OUT[Q=90]"
run "rotate 90"                 "--rotate 90"                 "-rotate 90"                     "rot $PHOTO $OUT[Q=90] d90"
run "rotate 17.5 enlarged"      "--rotate 17.5 --enlarge"     "-background white -rotate 17.5" "rotate $PHOTO $OUT[Q=90] 17.5"
run "resize to half, resampled" "--resize $((W / 2))x$((H / 2)) --resample" "-resize 50%"     "resize $PHOTO $OUT[Q=90] 0.5"
run "load and save only"        ""                            ""                               "copy $PHOTO $OUT[Q=90]"

echo
echo "In process, the operation alone:"
"$BUILD_DIR/bench/tarnby-bench-edit" "$PHOTO" "$REPEAT"
echo "Load after: $(cut -d' ' -f1-3 /proc/loadavg)"
