#!/usr/bin/env bash
# Installs every Debian package that building, running and testing Tarnby needs.
# Idempotent and quick when everything is already there: apt is only called for
# packages that dpkg does not report as installed.
set -euo pipefail

PACKAGES=(
  # toolchain
  build-essential cmake ninja-build pkg-config clang libclang-rt-14-dev
  # Qt 6
  qt6-base-dev qt6-base-dev-tools qt6-multimedia-dev qt6-image-formats-plugins qt6-svg-dev
  qt6-l10n-tools libqt6sql6-sqlite libqt6sql6-psql libgl-dev
  # picture layer (libjpeg and libpng: thumbnails decode and encode directly)
  libjpeg62-turbo-dev libpng-dev libmagick++-dev libgs-dev libemf2svg-dev libdxflib-dev libgsf-1-dev
  libtiff-dev
  # tables, documents, archives, mail
  mdbtools-dev libwps-dev librevenge-dev libarchive-dev libvmime-dev
  qtkeychain-qt6-dev antiword catdoc
  # sound and video
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad
  gstreamer1.0-libav fluid-soundfont-gm
  # tests and screenshots; the mail tests' own SMTP and IMAP servers (tests/tools/mailstack)
  xvfb xauth poppler-utils netpbm postfix dovecot-imapd dovecot-pop3d dovecot-lmtpd openssl curl zip
  # the organizer: a throw-away PostgreSQL server for its tests, the sqlite3 shell for its benchmark
  postgresql postgresql-common sqlite3 libsqlite3-dev
  # the icon (rendered at build time), the install and package tests
  librsvg2-bin desktop-file-utils shared-mime-info xdg-utils libfile-mimeinfo-perl bash-completion
  man-db dpkg-dev binutils
  # the search benchmark runs fdfind beside the walk; screenshots under Xvfb use xwd
  fd-find x11-apps
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
# Postfix is installed for the mail tests only: left unconfigured, it never
# starts on its own and never sends anything off the machine.
if ! dpkg -s postfix >/dev/null 2>&1; then
  echo "postfix postfix/main_mailer_type select No configuration" | $SUDO debconf-set-selections
fi
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
