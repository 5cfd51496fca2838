#!/usr/bin/env bash
# Installs what is missing, builds Tarnby and makes its Debian package with
# CPack in build/package/.
#   scripts/package.sh            build the package
#   scripts/package.sh --install  build it, then install it with apt (which
#                                 also installs the packages it depends on)
# Remove it again with: apt remove tarnby
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build --target tarnby tarnby-cli tarnby_man_pages
rm -rf build/package
cpack --config build/CPackConfig.cmake -G DEB -B build/package
deb=$(ls build/package/tarnby_*.deb)
echo "Package: $deb"

if [ "${1:-}" = "--install" ]; then
  SUDO=""
  if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
  $SUDO env DEBIAN_FRONTEND=noninteractive apt-get install -y "./$deb"
fi
