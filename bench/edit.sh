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

# Milliseconds that the command takes, once: "wall/processor" (processor:
# user and system time of all its threads; other helpers' load shows in the
# first, much less in the second).
time_ms() {
  local TIMEFORMAT='%R %U %S' times
  times=$( { time "$@" > /dev/null 2>&1; } 2>&1 ) || { echo "failed: $*" >&2; echo "nan/nan"; return; }
  awk -v t="$times" 'BEGIN { split(t, a, " "); printf "%.0f/%.0f", a[1] * 1000, (a[2] + a[3]) * 1000 }'
}

echo "Machine: $(nproc) cores, pinned to $CORES; load before: $(cut -d' ' -f1-3 /proc/loadavg)"
echo "Photo: $PHOTO (${W}x${H}); JPEG out at quality 90 (chroma: tarnby 2x2, convert and vips 1x1, their defaults); one run each, process start included"
echo "Each time as wall/processor milliseconds; the ratios are of wall times, then of processor times"
printf "%-26s %12s %12s %12s %11s %11s\n" operation tarnby-ms convert-ms vips-ms vs-convert vs-vips
run() {
  local name=$1 tarnby=$2 magick=$3 vips=$4
  local t m v=nan/nan
  # shellcheck disable=SC2086
  t=$(time_ms "$CLI" convert --quality 90 "$PHOTO" "$OUT" $tarnby)
  # shellcheck disable=SC2086
  m=$(time_ms "$CONVERT" "$PHOTO" $magick -quality 90 "$OUT")
  if [ -n "$VIPS" ] && [ -n "$vips" ]; then
    # shellcheck disable=SC2086
    v=$(time_ms "$VIPS" $vips)
  fi
  awk -v n="$name" -v t="$t" -v m="$m" -v v="$v" '
    function ratio(a, b,  x, y) {
      split(a, x, "/"); split(b, y, "/")
      if (x[1] == "nan" || y[1] == "nan" || y[1] == 0 || y[2] == 0) return "-"
      return sprintf("%.2f/%.2f", x[1] / y[1], x[2] / y[2])
    }
    BEGIN { printf "%-26s %12s %12s %12s %11s %11s\n", n, t, m, v, ratio(t, m), ratio(t, v) }'
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
