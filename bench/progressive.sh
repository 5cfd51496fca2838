#!/usr/bin/env bash
# Thumbnails of one large photo saved baseline and progressive: tarnby-cli
# thumbs --no-cache over a folder of copies of each, one run per folder.
# See bench/README.md.
#
#   bench/progressive.sh [BUILD_DIR]
#
# Environment: W and H (6000 x 4000), COPIES (20), SIZE (128), CORES (1),
# BENCH_DIR (/tmp/tarnby-bench).
set -euo pipefail

W=${W:-6000}
H=${H:-4000}
COPIES=${COPIES:-20}
SIZE=${SIZE:-128}
CORES=${CORES:-1}
BENCH_DIR=${BENCH_DIR:-/tmp/tarnby-bench}
HERE=$(cd "$(dirname "$0")" && pwd)
BUILD_DIR=$(cd "${1:-$HERE/../build}" && pwd)
CLI="$BUILD_DIR/src/cli/tarnby-cli"

CONVERT=/usr/bin/convert
[ -x "$CONVERT" ] || { echo "ImageMagick is missing (apt-get install imagemagick)" >&2; exit 1; }
[ -x "$CLI" ] || { echo "no $CLI: build tarnby-cli first" >&2; exit 1; }
taskset -pc "0-$((CORES - 1))" $$ > /dev/null

# The same photo-like picture as bench/thumbnails.sh, saved twice.
PICS="$BENCH_DIR/progressive-${W}x${H}"
if [ ! -f "$PICS/.complete" ]; then
  echo "Generating a ${W}x${H} photo in $PICS (once)..."
  rm -rf "$PICS"; mkdir -p "$PICS"
  "$CONVERT" -seed 7 -size "$((W / 4))x$((H / 4))" plasma:fractal -blur 0x2 \
    -resize "${W}x${H}!" -attenuate 0.5 +noise Gaussian "$PICS/photo.ppm"
  "$CONVERT" "$PICS/photo.ppm" -quality 90 "$PICS/baseline.jpg"
  "$CONVERT" "$PICS/photo.ppm" -quality 90 -interlace JPEG "$PICS/progressive.jpg"
  rm "$PICS/photo.ppm"
  touch "$PICS/.complete"
fi

WORK="$BENCH_DIR/progressive-run"
rm -rf "$WORK"; mkdir -p "$WORK"
for kind in baseline progressive; do
  mkdir -p "$WORK/$kind"
  for i in $(seq 1 "$COPIES"); do cp "$PICS/$kind.jpg" "$WORK/$kind/$i.jpg"; done
done
cat "$WORK"/*/*.jpg > /dev/null

source "$HERE/measure.sh"

echo "Machine: $(nproc) cores, pinned to $CORES; load before: $(cut -d' ' -f1-3 /proc/loadavg)"
echo "Files: baseline $(stat -c %s "$PICS/baseline.jpg") bytes, progressive $(stat -c %s "$PICS/progressive.jpg") bytes"
export XDG_CACHE_HOME="$WORK/cache"
printf '%-34s %9s %9s %12s\n' "$COPIES thumbnails of $SIZE, --no-cache" "wall" "processor" "per picture"
for kind in baseline progressive; do
  mkdir -p "$WORK/out-$kind"
  read -r t c < <(measure "$CLI" thumbs "$WORK/$kind" "$WORK/out-$kind" --size "$SIZE" --no-cache)
  made=$(find "$WORK/out-$kind" -name '*.png' | wc -l)
  [ "$made" -eq "$COPIES" ] || { echo "$kind: tarnby-cli wrote $made of $COPIES" >&2; exit 1; }
  printf '%-34s %8.3fs %8.3fs %10.1fms\n' "$kind" "$t" "$c" "$(awk -v c="$c" -v n="$COPIES" 'BEGIN { print c * 1000 / n }')"
done
echo "Load after: $(cut -d' ' -f1-3 /proc/loadavg)"
