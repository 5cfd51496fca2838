#!/usr/bin/env bash
# Installs what is missing, builds Tarnby with its tests and runs every test.
#   scripts/test.sh             the normal build (build/)
#   scripts/test.sh --sanitize  AddressSanitizer + UndefinedBehaviorSanitizer (build-asan/)
# Extra arguments after the options go to ctest (for example -R catalogue).
set -euo pipefail
cd "$(dirname "$0")/.."

dir=build
flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
if [ "${1:-}" = "--sanitize" ]; then
  shift
  dir=build-asan
  flags=(-DCMAKE_BUILD_TYPE=Debug -DTARNBY_SANITIZE=ON -DCMAKE_CXX_FLAGS_DEBUG="-g -O1")
fi

bash scripts/install-deps.sh
cmake -S . -B "$dir" -G Ninja "${flags[@]}" >/dev/null
cmake --build "$dir"
cd "$dir"
ctest --output-on-failure -j "$(nproc)" "$@"
