#!/usr/bin/env bash
# Sending N photos (default 100 of 3 MB, about 300 MB) to one address through
# local Postfix and Dovecot (tests/tools/mailstack; root only): the time to
# zip against zip -1, and the time from Send to the message in the mailbox
# against handing the same archive to the server with curl over SMTP; then
# the peak resident memory of receiving one message with a large archive
# (RECV_SIZE, 150 MB) over IMAP and over POP3. See bench/README.md.
#
#   bench/mail.sh [BUILD_DIR]
#
# Environment: N (100), SIZE (3000000 bytes a photo), CORES (2),
# RECV_SIZE (150000000 bytes), BENCH_DIR (/tmp/tarnby-bench).
set -euo pipefail

N=${N:-100}
SIZE=${SIZE:-3000000}
RECV_SIZE=${RECV_SIZE:-150000000}
CORES=${CORES:-2}
BENCH_DIR=${BENCH_DIR:-/tmp/tarnby-bench}
HERE=$(cd "$(dirname "$0")" && pwd)
BUILD_DIR=$(cd "${1:-$HERE/../build}" && pwd)
CLI=$BUILD_DIR/src/cli/tarnby-cli
MAILSTACK=$HERE/../tests/tools/mailstack

cmake --build "$BUILD_DIR" --target tarnby-cli > /dev/null
command -v zip > /dev/null || apt-get install -y zip > /dev/null
taskset -pc "0-$((CORES - 1))" $$ > /dev/null

# The photos: already-compressed data, as a camera's JPEG files are (random
# bytes behind a JPEG name: no compressor gains anything on either).
PHOTOS=$BENCH_DIR/mail-photos-$N-$SIZE
if [ ! -d "$PHOTOS" ]; then
  echo "Generating $N photos of $SIZE bytes in $PHOTOS (once)..."
  mkdir -p "$PHOTOS.tmp"
  for i in $(seq -w 1 "$N"); do head -c "$SIZE" /dev/urandom > "$PHOTOS.tmp/IMG_$i.jpg"; done
  mv "$PHOTOS.tmp" "$PHOTOS"
fi
cat "$PHOTOS"/* > /dev/null

# A stack of its own, with room for a message of the whole archive.
STACK=$(mktemp -d /tmp/tarnby-bench-mail-XXXXXX)
WORK=$(mktemp -d "$BENCH_DIR/mail-work-XXXXXX")
trap '"$MAILSTACK" stop "$STACK" > /dev/null; rm -rf "$WORK"' EXIT
LIMIT=$((2 * (N * SIZE > RECV_SIZE ? N * SIZE : RECV_SIZE) + 10000000))
MAILSTACK_SMTP_PORT=4525 MAILSTACK_SMTPS_PORT=4465 MAILSTACK_IMAP_PORT=4143 MAILSTACK_IMAPS_PORT=4993 \
  MAILSTACK_POP3_PORT=4110 MAILSTACK_POP3S_PORT=4995 \
  MAILSTACK_MESSAGE_LIMIT=$LIMIT "$MAILSTACK" start "$STACK" > /dev/null
env_value() { sed -n "s/^$1=//p" "$STACK/env"; }
HOST=$(env_value TARNBY_TEST_SMTP_HOST)
PORT=$(env_value TARNBY_TEST_SMTP_PORT)
IMAP_PORT=$(env_value TARNBY_TEST_IMAP_PORT)
POP3_PORT=$(env_value TARNBY_TEST_POP3_PORT)
USER_NAME=$(env_value TARNBY_TEST_SMTP_USER)
PASSWORD=$(env_value TARNBY_TEST_SMTP_PASS)
ADDRESS=$(env_value TARNBY_TEST_MAIL_ADDRESS)
CA=$(env_value TARNBY_TEST_TLS_CA)
MAILDIR=$(env_value TARNBY_TEST_MAILDIR)
printf '%s\n' "$PASSWORD" > "$WORK/password"
mkdir -p "$WORK/home"
# The account's user is its address, which is then also the sender's.
USER_NAME=$ADDRESS

delivered() { { find "$MAILDIR/new" "$MAILDIR/cur" -type f 2> /dev/null || true; } | wc -l; }
wait_for() { # count
  while [ "$(delivered)" -lt "$1" ]; do sleep 0.02; done
}
now() { date +%s.%N; }

# 1. Zipping: zip -1, then Tarnby's archive. Tarnby makes the archive before
# it connects; sending to a closed port ends the run right after it.
rm -f "$WORK/z.zip"
start=$(now); zip -q -1 -j "$WORK/z.zip" "$PHOTOS"/*.jpg; end=$(now)
ZIP1=$(echo "$end - $start" | bc)
FILES=("$PHOTOS"/*.jpg)
start=$(now)
"$CLI" mail send --home "$WORK/home" --smtp smtp://127.0.0.1:1 --user "$USER_NAME" --password-file "$WORK/password" \
  --to "$ADDRESS" "${FILES[@]}" > /dev/null 2>&1 || true
end=$(now)
TZIP=$(echo "$end - $start" | bc)
ARCHIVE=$PHOTOS/IMG_$(printf "%0${#N}d" 1).Zip
ls -l "$ARCHIVE" | awk '{print "archive: " $5 " bytes"}'

# 2. Send to mailbox: Tarnby (archive made again, MIME-encoded, sent) ...
before=$(delivered)
start=$(now)
"$CLI" mail send --home "$WORK/home" --smtp "smtp://$HOST:$PORT" --user "$USER_NAME" --password-file "$WORK/password" \
  --ca-file "$CA" --to "$ADDRESS" --subject bench "${FILES[@]}" > /dev/null
wait_for $((before + 1))
end=$(now)
TSEND=$(echo "$end - $start" | bc)

# ... and curl with the same archive in a message made beforehand (not timed).
python3 - "$ARCHIVE" "$ADDRESS" "$WORK/message.eml" <<'PY'
import sys
from email.message import EmailMessage
archive, address, out = sys.argv[1:4]
m = EmailMessage()
m["From"] = address; m["To"] = address; m["Subject"] = "bench curl"
m.set_content("bench")
with open(archive, "rb") as f:
    m.add_attachment(f.read(), maintype="application", subtype="zip", filename=archive.rsplit("/", 1)[1])
with open(out, "wb") as f:
    f.write(bytes(m))
PY
cat "$WORK/message.eml" > /dev/null
before=$(delivered)
start=$(now)
curl -s --url "smtp://$HOST:$PORT" --ssl-reqd --cacert "$CA" --user "$USER_NAME:$PASSWORD" \
  --mail-from "$ADDRESS" --mail-rcpt "$ADDRESS" --upload-file "$WORK/message.eml"
wait_for $((before + 1))
end=$(now)
TCURL=$(echo "$end - $start" | bc)
TTRANSFER=$(echo "$TSEND - $TZIP" | bc)

printf 'photos: %d x %d bytes\n' "$N" "$SIZE"
printf 'zip -1:                      %6.2f s\n' "$ZIP1"
printf 'tarnby zip:                  %6.2f s   (%.2fx zip -1)\n' "$TZIP" "$(echo "$TZIP / $ZIP1" | bc -l)"
printf 'tarnby send to mailbox:      %6.2f s   (zip included)\n' "$TSEND"
printf 'tarnby send less its zip:    %6.2f s   (%.2fx curl)\n' "$TTRANSFER" "$(echo "$TTRANSFER / $TCURL" | bc -l)"
printf 'curl upload to mailbox:      %6.2f s   (message made beforehand)\n' "$TCURL"

# 3. Receive memory: one message with an archive of RECV_SIZE bytes, received
# with tarnby-cli mail receive (saved, then unpacked) over IMAP and over POP3;
# the peak resident memory from /usr/bin/time -v.
"$MAILSTACK" clear "$STACK" > /dev/null
mkdir -p "$WORK/big" "$WORK/in"
head -c "$RECV_SIZE" /dev/urandom > "$WORK/big/Big.jpg"
before=$(delivered)
"$CLI" mail send --home "$WORK/home" --smtp "smtp://$HOST:$PORT" --user "$USER_NAME" --password-file "$WORK/password" \
  --ca-file "$CA" --to "$ADDRESS" --subject big "$WORK/big/Big.jpg" > /dev/null
wait_for $((before + 1))
for proto in imap pop3; do
  rm -rf "$WORK/in" "$WORK/home/POP3Seen.TXT"
  mkdir "$WORK/in"
  [ $proto = imap ] && port=$IMAP_PORT || port=$POP3_PORT
  /usr/bin/time -v -o "$WORK/time" "$CLI" mail receive --all --home "$WORK/home" --$proto "$proto://$HOST:$port" \
    --user "$USER_NAME" --password-file "$WORK/password" --ca-file "$CA" --to "$WORK/in" > /dev/null
  cmp -s "$WORK/big/Big.jpg" "$WORK/in/Big.jpg" || { echo "receive over $proto did not give the file back" >&2; exit 1; }
  RSS=$(sed -n 's/.*Maximum resident set size (kbytes): //p' "$WORK/time")
  WALL=$(sed -n 's/.*Elapsed (wall clock) time (h:mm:ss or m:ss): //p' "$WORK/time")
  printf 'receive %3d MB archive, %s: %6d MB peak resident, %s wall\n' "$((RECV_SIZE / 1000000))" "$proto" \
    "$((RSS / 1024))" "$WALL"
done
