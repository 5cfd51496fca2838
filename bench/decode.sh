#!/usr/bin/env bash
# Full decode of one large JPEG: tarnby-cli convert to BMP against
# libjpeg-turbo's djpeg -bmp, run by turns; then Tarnby's picture layer
# against ImageMagick, both in process (tarnby-bench-decode), plus the
# convert command line for reference. See bench/README.md.
#
#   bench/decode.sh [BUILD_DIR]
#
# Environment: W and H (6000 x 4000), REPEAT (7), RUNS (5: of each command
# line), CORES (2), BENCH_DIR (/tmp/tarnby-bench), OUT_DIR (a folder of
# /dev/shm where there is one).
set -euo pipefail

W=${W:-6000}
H=${H:-4000}
REPEAT=${REPEAT:-7}
RUNS=${RUNS:-5}
CORES=${CORES:-2}
BENCH_DIR=${BENCH_DIR:-/tmp/tarnby-bench}
HERE=$(cd "$(dirname "$0")" && pwd)
BUILD_DIR=$(cd "${1:-$HERE/../build}" && pwd)

# Benchmark-only packages; the project's own dependencies are in
# scripts/install-deps.sh.
need=()
for p in imagemagick libjpeg-turbo-progs; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || need+=("$p")
done
if [ ${#need[@]} -gt 0 ]; then
  SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${need[@]}"
fi
CONVERT=/usr/bin/convert
CLI="$BUILD_DIR/src/cli/tarnby-cli"

cmake -S "$HERE/.." -B "$BUILD_DIR" -DTARNBY_BUILD_BENCH=ON > /dev/null
ninja -C "$BUILD_DIR" tarnby-bench-decode tarnby-cli > /dev/null

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

# The BMPs (72 MB each) go to memory: tarnby-cli saves atomically and syncs
# the file to the disk before it renames it, which djpeg does not, and the
# disk's write-back would be timed rather than the work. One run of each to
# BENCH_DIR shows what the sync costs on this disk.
if [ -z "${OUT_DIR:-}" ]; then
  OUT_DIR="$BENCH_DIR/bmp"
  [ -d /dev/shm ] && [ -w /dev/shm ] && OUT_DIR=/dev/shm/tarnby-bench-bmp
fi
WORK="$OUT_DIR"
mkdir -p "$WORK"
source "$HERE/measure.sh"
median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
djpeg_wall=(); djpeg_cpu=(); cli_wall=(); cli_cpu=()
for i in $(seq 1 "$RUNS"); do
  read -r w c < <(measure djpeg -bmp -outfile "$OUT_DIR/djpeg.bmp" "$PHOTO")
  djpeg_wall+=("$w"); djpeg_cpu+=("$c")
  read -r w c < <(measure "$CLI" convert "$PHOTO" "$OUT_DIR/tarnby.bmp")
  cli_wall+=("$w"); cli_cpu+=("$c")
done
# The headers differ (Tarnby states 96 dpi where the JPEG states none).
cmp -s <(tail -c +55 "$OUT_DIR/djpeg.bmp") <(tail -c +55 "$OUT_DIR/tarnby.bmp") && same="the same pixels" || same="different pixels"
dw=$(printf '%s\n' "${djpeg_wall[@]}" | median); dc=$(printf '%s\n' "${djpeg_cpu[@]}" | median)
tw=$(printf '%s\n' "${cli_wall[@]}" | median); tc=$(printf '%s\n' "${cli_cpu[@]}" | median)
echo "JPEG to BMP, median of $RUNS runs by turns, output in $OUT_DIR ($same):"
printf '  %-40s %8.3fs wall %8.3fs processor\n' "djpeg -bmp" "$dw" "$dc" "tarnby-cli convert" "$tw" "$tc"
awk -v a="$tw" -v b="$dw" -v c="$tc" -v d="$dc" \
  'BEGIN { printf "  ratio tarnby-cli / djpeg: wall %.2f, processor %.2f (goal: at most 1.20)\n", a / b, c / d }'
read -r w c < <(measure djpeg -bmp -outfile "$BENCH_DIR/djpeg.bmp" "$PHOTO")
read -r w2 c2 < <(measure "$CLI" convert "$PHOTO" "$BENCH_DIR/tarnby.bmp")
printf '  to the disk (%s), one run: djpeg %.3fs wall, tarnby-cli %.3fs wall\n' "$BENCH_DIR" "$w" "$w2"
rm -f "$OUT_DIR/djpeg.bmp" "$OUT_DIR/tarnby.bmp" "$BENCH_DIR/djpeg.bmp" "$BENCH_DIR/tarnby.bmp"

"$BUILD_DIR/bench/tarnby-bench-decode" "$PHOTO" "$REPEAT"
start=$(date +%s.%N)
"$CONVERT" "$PHOTO" null:
end=$(date +%s.%N)
awk -v a="$start" -v b="$end" 'BEGIN { printf "convert FILE null: (one run, with process start): %.1f ms\n", (b - a) * 1000 }'
echo "Load after: $(cut -d' ' -f1-3 /proc/loadavg)"
