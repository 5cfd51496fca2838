#!/usr/bin/env bash
# A dBASE table of N records (default 1,000,000; eight fields, one a memo)
# written out as CSV: tarnby-cli table --csv against Python's dbfread (where
# python3-dbfread is installed) or the plain Python reader bench/read_dbf.py.
# See bench/README.md.
#
# Then the table view over the same table (bench_tableview: first screen and
# memory after paging to the end), and tarnby-cli table --csv against
# mdb-export (mdbtools, installed with apt-get when missing) on every table of
# the Access files in FIXTURES, each run REPEAT times.
#
#   bench/tables.sh [BUILD_DIR]
#
# Environment: N (1000000), CORES (2), BENCH_DIR (/tmp/tarnby-bench),
# PYTHON (/usr/bin/python3: Debian's, which finds python3-dbfread),
# FIXTURES (../shared/fixtures beside the repository), REPEAT (100).
set -euo pipefail

N=${N:-1000000}
CORES=${CORES:-2}
BENCH_DIR=${BENCH_DIR:-/tmp/tarnby-bench}
PYTHON=${PYTHON:-/usr/bin/python3}
HERE=$(cd "$(dirname "$0")" && pwd)
BUILD_DIR=$(cd "${1:-$HERE/../build}" && pwd)

cmake --build "$BUILD_DIR" --target tarnby-cli bench_tableview > /dev/null
taskset -pc "0-$((CORES - 1))" $$ > /dev/null

mkdir -p "$BENCH_DIR"
TABLE="$BENCH_DIR/bench-$N.dbf"
if [ ! -f "$TABLE" ]; then
  echo "Generating $TABLE (once)..."
  "$PYTHON" "$HERE/make_dbf.py" "$TABLE.tmp.dbf" "$N"
  mv "$TABLE.tmp.dbt" "${TABLE%.dbf}.dbt"
  mv "$TABLE.tmp.dbf" "$TABLE"
fi
cat "$TABLE" "${TABLE%.dbf}.dbt" > /dev/null

seconds() { # command... : wall-clock seconds of one run, output to /dev/null
  local start end
  start=$(date +%s.%N)
  "$@" > /dev/null
  end=$(date +%s.%N)
  echo "$end - $start" | bc
}

tarnby=$(seconds "$BUILD_DIR/src/cli/tarnby-cli" table "$TABLE" --csv)
if "$PYTHON" -c 'import dbfread' 2> /dev/null; then
  other_name="dbfread"
  other=$(seconds "$PYTHON" -c '
import csv, sys, dbfread
t = dbfread.DBF(sys.argv[1], encoding="cp1252")
w = csv.writer(sys.stdout, lineterminator="\r\n")
w.writerow(t.field_names)
for r in t:
    w.writerow(r.values())' "$TABLE")
else
  other_name="bench/read_dbf.py"
  other=$(seconds "$PYTHON" "$HERE/read_dbf.py" "$TABLE")
fi
printf '%-28s %8.2f s\n' "tarnby-cli table --csv" "$tarnby" "$other_name" "$other"
if [ "$other_name" = dbfread ]; then
  plain=$(seconds "$PYTHON" "$HERE/read_dbf.py" "$TABLE")
  printf '%-28s %8.2f s\n' "bench/read_dbf.py" "$plain"
fi
printf 'ratio: %.1fx\n' "$(echo "$other / $tarnby" | bc -l)"

echo
echo "The table view (bench_tableview):"
"$BUILD_DIR/bench/bench_tableview" "$TABLE" 2> /dev/null

# Access: no program here writes Access files, so the comparison runs on the
# sample files' tables, each exported REPEAT times by each program.
FIXTURES=${FIXTURES:-$HERE/../../shared/fixtures}
REPEAT=${REPEAT:-100}
if ! command -v mdb-export > /dev/null; then
  apt-get install -y mdbtools > /dev/null
fi
if [ -d "$FIXTURES/MDB" ]; then
  exports() { # program: "tarnby" or "mdb-export"
    local mdb table i
    for mdb in "$FIXTURES"/MDB/test.mdb "$FIXTURES"/MDB/testAccess2_2000.mdb "$FIXTURES"/MDB/db-enc.mdb; do
      for table in $(mdb-tables -1 "$mdb"); do
        for ((i = 0; i < REPEAT; i++)); do
          if [ "$1" = tarnby ]; then
            "$BUILD_DIR/src/cli/tarnby-cli" table "$mdb" --csv --table "$table"
          else
            mdb-export "$mdb" "$table"
          fi
        done
      done
    done
  }
  echo
  mdb_tarnby=$(seconds exports tarnby)
  mdb_other=$(seconds exports mdb-export)
  printf '%-28s %8.2f s\n' "tarnby-cli table --csv" "$mdb_tarnby" "mdb-export" "$mdb_other"
  printf 'Access ratio: %.2fx\n' "$(echo "$mdb_other / $mdb_tarnby" | bc -l)"
fi
