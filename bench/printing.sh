#!/usr/bin/env bash
# Printing to PDF (bench/README.md): a listing of a 100,000-row table, pages
# a second and peak memory, beside enscript + ps2pdf on the same rows as CSV;
# the same listing of a tenth of the rows, to show that memory does not grow
# with the table; and a folder-location report over the search benchmark's
# tree beside tarnby-cli find.
#   bench/printing.sh [BUILD]     N=100000 TREE=/tmp/tarnby-bench/search-tree
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${1:-build}
N=${N:-100000}
TREE=${TREE:-/tmp/tarnby-bench/search-tree}
WORK=/tmp/tarnby-bench/printing
PYTHON=${PYTHON:-python3}
ninja -C "$BUILD" -j2 tarnby-cli >/dev/null
CLI=$(realpath "$BUILD/src/cli/tarnby-cli")
export QT_QPA_PLATFORM=offscreen
mkdir -p "$WORK"

if ! command -v enscript >/dev/null || ! command -v ps2pdf >/dev/null; then
  apt-get install -y enscript ghostscript >/dev/null
fi

table() { # table ROWS: a dBASE table of ROWS rows, made once
  local t="$WORK/list-$1.dbf"
  if [ ! -e "$t" ]; then "$PYTHON" bench/make_dbf.py "$t" "$1" >/dev/null; fi
  echo "$t"
}

# run LABEL COMMAND...: wall time and peak memory of one run.
run() {
  local label=$1; shift
  /usr/bin/time -v "$@" >"$WORK/out.txt" 2>"$WORK/time.txt"
  local wall rss
  wall=$(awk -F': ' '/Elapsed \(wall clock\)/ {n=split($2,p,":"); s=0; for(i=1;i<=n;i++) s=s*60+p[i]; print s}' "$WORK/time.txt")
  rss=$(awk -F': ' '/Maximum resident set size/ {print $2}' "$WORK/time.txt")
  printf '%-52s %8.2f s %8d MB\n' "$label" "$wall" "$((rss / 1024))"
  LAST_WALL=$wall
}

pages() { pdfinfo "$1" | awk '/^Pages:/ {print $2}'; }

FIELDS=ID,NAME,CITY,PRICE,QTY,SOLD
big=$(table "$N")
small=$(table "$((N / 10))")
cat "$big" >/dev/null

echo "listing of $N rows, fields $FIELDS"
run "tarnby-cli print (listing) $((N / 10)) rows" "$CLI" print "$small" --fields "$FIELDS" --pdf "$WORK/small.pdf"
run "tarnby-cli print (listing) $N rows" "$CLI" print "$big" --fields "$FIELDS" --pdf "$WORK/big.pdf"
t_list=$LAST_WALL
p=$(pages "$WORK/big.pdf")
printf '%-52s %8d pages, %.0f pages/s\n' "" "$p" "$(echo "$p / $t_list" | bc -l)"
"$CLI" table "$big" --csv | cut -d, -f1-6 >"$WORK/big.csv"
run "enscript + ps2pdf on the same rows as CSV" sh -c "enscript -q -B -p - '$WORK/big.csv' | ps2pdf - '$WORK/enscript.pdf'"
printf '%-52s %8d pages\n' "" "$(pages "$WORK/enscript.pdf")"
printf '%-52s %8.2f x\n' "tarnby / enscript (wall time)" "$(echo "$t_list / $LAST_WALL" | bc -l)"

if [ ! -e "$TREE/.complete" ]; then
  echo "making the search benchmark's tree (bench/search.sh) ..."
  RUNS=1 bench/search.sh "$BUILD" >/dev/null
fi
find "$TREE" >/dev/null
echo "report over $TREE"
run "tarnby-cli find '*.xwd'" "$CLI" find '*.xwd' "$TREE"
t_find=$LAST_WALL
run "tarnby-cli print --report '*.xwd'" "$CLI" print --report '*.xwd' "$TREE" --pdf "$WORK/report.pdf"
printf '%-52s %8d pages\n' "" "$(pages "$WORK/report.pdf")"
printf '%-52s %8.2f x\n' "report / find (wall time)" "$(echo "$LAST_WALL / $t_find" | bc -l)"
