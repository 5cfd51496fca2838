#!/usr/bin/env bash
# Installs what is missing, builds Tarnby and starts it. Arguments are passed
# on to Tarnby (files to open, --home DIR).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build --target tarnby tarnby-cli
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  echo "No display is set: starting Tarnby under Xvfb on :99." >&2
  Xvfb :99 -screen 0 1280x1024x24 >/dev/null 2>&1 &
  export DISPLAY=:99
  sleep 1
fi
exec ./build/src/app/tarnby "$@"
