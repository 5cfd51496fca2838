#!/usr/bin/env bash
# Builds and runs the browsing benchmark: listing and filtering a folder of
# 10,000 files, a folder of 100,000 entries, and thumbnails of 5,000 pictures
# with the memory they take.
#   bench/browse.sh [--thumbs N] [--keep DIR]
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
ninja -C build -j2 bench_browse >/dev/null
exec ./build/bench/bench_browse "$@"
