#!/usr/bin/env bash
# Thumbnails of a folder of large photos: tarnby-cli thumbs (cold and warm
# cache) against vipsthumbnail and ImageMagick, one run each, on the same cores
# and at the same output size and PNG compression. See bench/README.md.
#
#   bench/thumbnails.sh [BUILD_DIR]
#
# Environment: N (photos, 300), W and H (4000 x 3000), SIZE (256), CORES (2),
# BASES (distinct photos generated, 12; the others are copies),
# BENCH_DIR (/tmp/tarnby-bench).
set -euo pipefail

N=${N:-300}
W=${W:-4000}
H=${H:-3000}
SIZE=${SIZE:-256}
CORES=${CORES:-2}
BASES=${BASES:-12}
BENCH_DIR=${BENCH_DIR:-/tmp/tarnby-bench}
HERE=$(cd "$(dirname "$0")" && pwd)
BUILD_DIR=$(cd "${1:-$HERE/../build}" && pwd)
CLI="$BUILD_DIR/src/cli/tarnby-cli"

# Benchmark-only packages; the project's own dependencies are in
# scripts/install-deps.sh.
need=()
for p in libvips-tools imagemagick libjpeg-turbo-progs; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || need+=("$p")
done
if [ ${#need[@]} -gt 0 ]; then
  SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${need[@]}"
fi
# The real ImageMagick, not whatever else is called convert on the PATH.
CONVERT=/usr/bin/convert
MOGRIFY=/usr/bin/mogrify
[ -x "$CONVERT" ] && [ -x "$MOGRIFY" ] || { echo "ImageMagick is missing" >&2; exit 1; }
[ -x "$CLI" ] || { echo "no $CLI: build tarnby-cli first" >&2; exit 1; }

# Every tool runs on the same cores: this shell is pinned and its children
# inherit the mask.
taskset -pc "0-$((CORES - 1))" $$ > /dev/null

# Photo-like pictures (fractal plasma, blurred, with sensor-like noise),
# generated once and kept for later runs.
PHOTOS="$BENCH_DIR/photos-${W}x${H}-$N"
if [ ! -f "$PHOTOS/.complete" ]; then
  echo "Generating $N photos of ${W}x${H} in $PHOTOS (once)..."
  rm -rf "$PHOTOS"; mkdir -p "$PHOTOS/base"
  for b in $(seq 1 "$BASES"); do
    "$CONVERT" -seed "$b" -size "$((W / 4))x$((H / 4))" plasma:fractal -blur 0x2 \
      -resize "${W}x${H}!" -attenuate 0.5 +noise Gaussian -quality 90 "$PHOTOS/base/$b.jpg" &
    if (( b % CORES == 0 )); then wait; fi
  done
  wait
  for i in $(seq 1 "$N"); do
    cp "$PHOTOS/base/$(( (i - 1) % BASES + 1 )).jpg" "$PHOTOS/photo$(printf %04d "$i").jpg"
  done
  touch "$PHOTOS/.complete"
fi

WORK="$BENCH_DIR/run"
rm -rf "$WORK"; mkdir -p "$WORK"
per_process=$(( (N + CORES - 1) / CORES ))

source "$HERE/measure.sh"

count_png() { find "$1" -name '*.png' | wc -l; }

# Warm the page cache so that every tool reads the files from memory.
cat "$PHOTOS"/*.jpg > /dev/null

echo "Machine: $(nproc) cores, pinned to $CORES; load before: $(cut -d' ' -f1-3 /proc/loadavg)"

mkdir -p "$WORK/tarnby"
export XDG_CACHE_HOME="$WORK/cache"
read -r t_cold c_cold < <(measure "$CLI" thumbs "$PHOTOS" "$WORK/tarnby" --size "$SIZE")
[ "$(count_png "$WORK/tarnby")" -eq "$N" ] || { echo "tarnby-cli wrote $(count_png "$WORK/tarnby") of $N" >&2; exit 1; }
rm -rf "$WORK/tarnby"; mkdir -p "$WORK/tarnby"
read -r t_warm c_warm < <(measure "$CLI" thumbs "$PHOTOS" "$WORK/tarnby" --size "$SIZE")
[ "$(count_png "$WORK/tarnby")" -eq "$N" ] || { echo "warm run wrote too few" >&2; exit 1; }
mkdir -p "$WORK/tarnby-nocache"
read -r t_nocache c_nocache < <(measure "$CLI" thumbs "$PHOTOS" "$WORK/tarnby-nocache" --size "$SIZE" --no-cache)

# vipsthumbnail takes many files per process but works through them one by
# one, so the list is split over one process per core.
mkdir -p "$WORK/vips"
vips_run() {
  find "$PHOTOS" -maxdepth 1 -name '*.jpg' -print0 |
    xargs -0 -P "$CORES" -n "$per_process" vipsthumbnail --size "$SIZE" -o "$WORK/vips/%s.png[compression=1]"
}
read -r t_vips c_vips < <(measure vips_run)
[ "$(count_png "$WORK/vips")" -eq "$N" ] || { echo "vipsthumbnail wrote $(count_png "$WORK/vips") of $N" >&2; exit 1; }

# libjpeg-turbo's own decoder at the scale the thumbnailers decode these
# photos at (an eighth), writing nothing, one process per file: what decoding
# alone costs, the floor for any thumbnailer that decodes through libjpeg.
floor_run() {
  find "$PHOTOS" -maxdepth 1 -name '*.jpg' -print0 |
    xargs -0 -P "$CORES" -n 1 djpeg -scale 1/8 -dct fast -nosmooth -outfile /dev/null
}
read -r t_floor c_floor < <(measure floor_run)

# ImageMagick: mogrify is convert applied to many files in one process, with
# the same options; jpeg:size lets libjpeg shrink while decoding.
mkdir -p "$WORK/magick"
magick_run() {
  find "$PHOTOS" -maxdepth 1 -name '*.jpg' -print0 |
    xargs -0 -P "$CORES" -n "$per_process" "$MOGRIFY" -path "$WORK/magick" -format png \
      -define "jpeg:size=$((SIZE * 2))x$((SIZE * 2))" -thumbnail "${SIZE}x${SIZE}" -define png:compression-level=1
}
read -r t_magick c_magick < <(measure magick_run)
[ "$(count_png "$WORK/magick")" -eq "$N" ] || { echo "ImageMagick wrote $(count_png "$WORK/magick") of $N" >&2; exit 1; }

echo "Load after: $(cut -d' ' -f1-3 /proc/loadavg)"
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }
printf '%-40s %9s %9s\n' "" "wall" "processor"
printf '%-40s %8.3fs %8.3fs\n' "tarnby-cli thumbs, cold cache" "$t_cold" "$c_cold" \
  "tarnby-cli thumbs, warm cache" "$t_warm" "$c_warm" \
  "tarnby-cli thumbs --no-cache" "$t_nocache" "$c_nocache" \
  "vipsthumbnail ($CORES processes)" "$t_vips" "$c_vips" \
  "ImageMagick mogrify ($CORES processes)" "$t_magick" "$c_magick" \
  "djpeg -scale 1/8 alone (decoding only)" "$t_floor" "$c_floor"
echo "Ratios (other / tarnby cold; goal against vipsthumbnail: at least 1.67, Tarnby in 0.6 of its time):"
echo "  vipsthumbnail: wall $(ratio "$t_vips" "$t_cold"), processor $(ratio "$c_vips" "$c_cold")"
echo "  ImageMagick:   wall $(ratio "$t_magick" "$t_cold"), processor $(ratio "$c_magick" "$c_cold")"
echo "  vipsthumbnail / tarnby --no-cache: wall $(ratio "$t_vips" "$t_nocache"), processor $(ratio "$c_vips" "$c_nocache")"
echo "  vipsthumbnail / djpeg decoding alone: processor $(ratio "$c_vips" "$c_floor") (the most any libjpeg-based thumbnailer can reach)"
echo "Warm cache, $N pictures: ${t_warm} s wall (goal: under 0.3 s)"
