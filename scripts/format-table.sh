#!/usr/bin/env bash
# Prints the README's table of picture formats as Markdown, from what the
# built program reports (`tarnby-cli formats`), so the table never claims a
# format that the build cannot read or write.
#
# Usage: scripts/format-table.sh [path/to/tarnby-cli]   (default: build/src/cli/tarnby-cli)
set -euo pipefail

cli="${1:-$(dirname "$0")/../build/src/cli/tarnby-cli}"
if [ ! -x "$cli" ]; then
  echo "format-table.sh: no tarnby-cli at $cli; build it first (ninja -C build tarnby-cli)" >&2
  exit 1
fi

"$cli" formats | awk -F '\t' '
  NR == 1 { print "| " $1 " | " $2 " | " $3 " | " $4 " | " $5 " |"; print "|---|---|---|---|---|"; next }
  { gsub(/\|/, "\\|"); print "| " $1 " | " $2 " | " $3 " | " $4 " | " $5 " |" }
'
