#!/usr/bin/env bash
# Prints the README's table of picture formats as Markdown, from what the
# built program reports (`tarnby-cli formats`), so the table never claims a
# format that the build cannot read or write.
#
# Usage: scripts/format-table.sh [path/to/tarnby-cli]   (default: build/src/cli/tarnby-cli)
#        scripts/format-table.sh --check README.md [path/to/tarnby-cli]
#          exits non-zero, showing the difference, when the README's table
#          is not the one the build reports
set -euo pipefail

readme=
if [ "${1:-}" = "--check" ]; then
  readme="$2"
  shift 2
fi
cli="${1:-$(dirname "$0")/../build/src/cli/tarnby-cli}"
if [ ! -x "$cli" ]; then
  echo "format-table.sh: no tarnby-cli at $cli; build it first (ninja -C build tarnby-cli)" >&2
  exit 1
fi

table() {
  "$cli" formats | awk -F '\t' '
    NR == 1 { print "| " $1 " | " $2 " | " $3 " | " $4 " | " $5 " |"; print "|---|---|---|---|---|"; next }
    { gsub(/\|/, "\\|"); print "| " $1 " | " $2 " | " $3 " | " $4 " | " $5 " |" }
  '
}

if [ -z "$readme" ]; then
  table
  exit 0
fi
# The README's table: from its header row to the first line that is not a row.
documented=$(awk '/^\| Extension \|/ { inside = 1 } inside && !/^\|/ { exit } inside { print }' "$readme")
if ! diff -u <(printf '%s\n' "$documented") <(table) >&2; then
  echo "format-table.sh: the table in $readme differs from what the build reports; regenerate it" >&2
  exit 1
fi
