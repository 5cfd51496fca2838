#!/usr/bin/env bash
# Full-decode benchmark of one large JPEG: the picture layer's Qt route
# against ImageMagick. Usage: bench/decode.sh [FILE.jpg] (default: a generated
# 24-megapixel JPEG). Prints both medians and their ratio.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
out="$(mktemp -d)"
trap 'rm -rf "$out"' EXIT
# shellcheck disable=SC2046
g++ -std=c++20 -O2 -fPIC "$here/decode_bench.cpp" -o "$out/decode_bench" \
  $(pkg-config --cflags --libs Qt6Gui Magick++) 2>/dev/null
"$out/decode_bench" "$@"
