#!/usr/bin/env bash
# The organizer with 100,000 entries in one group (N, default 100000): the
# import of a generated tree (tarnby-cli group import), the sorted listing of
# the group by each key (tarnby-cli group files --sort), against the sqlite3
# shell running the same statements on the same schema; then the nearest-match
# find and the group browser's first screen in process. One run each; ratios
# are the shell's time over Tarnby's (above 1: Tarnby is faster), from wall
# and from processor time (the steadier figure on a busy machine). See
# bench/README.md.
#
#   bench/organizer.sh [BUILD_DIR]
#   bench/organizer.sh --postgres [BUILD_DIR]
#
# With --postgres: the sorted listing on a throw-away PostgreSQL cluster
# (pg_virtualenv), the catalogue's listing in process against psql running the
# same statements (whole process: start, connection, rows), and the listing's
# growth of peak memory beside psql's peak (psql gathers the whole result).
#
# Environment: N (100000), PER_FOLDER (1000), CORES (2), BENCH_DIR (/tmp/tarnby-bench).
set -euo pipefail

N=${N:-100000}
PER_FOLDER=${PER_FOLDER:-1000}
CORES=${CORES:-2}
BENCH_DIR=${BENCH_DIR:-/tmp/tarnby-bench}
HERE=$(cd "$(dirname "$0")" && pwd)
POSTGRES=0
if [ "${1:-}" = "--postgres" ]; then POSTGRES=1; shift; fi
BUILD_DIR=$(cd "${1:-$HERE/../build}" && pwd)
CLI="$BUILD_DIR/src/cli/tarnby-cli"

if [ "$POSTGRES" = 1 ]; then
  command -v pg_virtualenv > /dev/null || { echo "pg_virtualenv is not installed (package postgresql-common)"; exit 1; }
  cmake --build "$BUILD_DIR" --target tarnby-bench-organizer > /dev/null
  taskset -pc "0-$((CORES - 1))" $$ > /dev/null
  pg_virtualenv sh -s "$BUILD_DIR/bench/tarnby-bench-organizer" "$N" << 'SH'
set -e
"$1" --postgres "$2" > /dev/null # the entries, put in by a first run
printf '%-32s %7s %7s\n' "seconds" "wall" "cpu"
"$1" --postgres "$2"
for key in ID GroupName FileName FileType Date FileKeyword; do
  order="\"$key\""
  [ "$key" = ID ] || order="$order, \"ID\""
  /usr/bin/time -f "%e %U %S %M" -o /tmp/tarnby-psql-time psql -X -q -A -t -F "$(printf '\t')" \
    -c "SELECT * FROM \"FileTable\" WHERE \"GroupName\" = 'Big' ORDER BY $order" > /dev/null
  read -r w u s m < /tmp/tarnby-psql-time
  printf '%-32s %7.3f %7.3f   peak memory %s KiB\n' "psql ORDER BY $key" "$w" "$(echo "$u + $s" | bc -l)" "$m"
done
rm -f /tmp/tarnby-psql-time
SH
  exit 0
fi

command -v sqlite3 > /dev/null || { echo "the sqlite3 shell is not installed (package sqlite3)"; exit 1; }
cmake --build "$BUILD_DIR" --target tarnby-cli tarnby-bench-organizer > /dev/null
taskset -pc "0-$((CORES - 1))" $$ > /dev/null

TREE="$BENCH_DIR/organizer-tree-$N"
if [ ! -d "$TREE" ]; then
  echo "Generating $TREE (once)..."
  python3 - "$TREE.tmp" "$N" "$PER_FOLDER" << 'PY'
import os, sys
root, n, per = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
kinds = ["jpg", "txt", "doc", "bmp", "mdb", "wav", "ini", "xyz"]
for i in range(n):
    folder = os.path.join(root, "folder%03d" % (i // per))
    if i % per == 0:
        os.makedirs(folder, exist_ok=True)
    path = os.path.join(folder, "file%06d.%s" % ((i * 7919) % n, kinds[i % len(kinds)]))
    open(path, "w").close()
    t = 946684800 + (i * 86413) % 800000000
    os.utime(path, (t, t))
PY
  mv "$TREE.tmp" "$TREE"
fi

WORK="$BENCH_DIR/organizer-work"
rm -rf "$WORK"
mkdir -p "$WORK/tarnby" "$WORK/shell"

source "$HERE/measure.sh"
# label, then "wall cpu" of tarnby-cli and of the shell: both times and both ratios.
row() {
  read -r tw tc <<< "$2"
  read -r sw sc <<< "$3"
  printf '%-32s %7.3f %7.3f   %7.3f %7.3f   %5.2fx %5.2fx\n' "$1" "$tw" "$tc" "$sw" "$sc" \
    "$(echo "$sw / $tw" | bc -l)" "$(echo "$sc / $tc" | bc -l)"
}

# The shell's statements: the empty catalogue's schema, then one transaction
# per folder of INSERTs with the values the import writes (the file's date and
# time as the catalogue keeps them). Written before the clock starts.
"$CLI" group list --home "$WORK/schema" > /dev/null
sqlite3 "$WORK/schema/FileTabl.MDB" .schema | grep -v sqlite_sequence > "$WORK/schema.sql"
python3 - "$TREE" "$WORK/import.sql" << 'PY'
import os, sys, time
tree, out = sys.argv[1], sys.argv[2]
cats = {"jpg": "Picture", "bmp": "Picture", "wav": "Multimedia", "txt": "Document", "doc": "Document",
        "mdb": "Database", "ini": "System"}
def q(s):
    return "'" + s.replace("'", "''") + "'"
stamp = time.strftime("%Y%m%d%H%M%S")
disp = time.strftime("%m-%d-%Y ") + "9:00:00 AM"
with open(out, "w") as f:
    f.write("INSERT INTO GroupTable (GroupName, GroupDesc, Date, Time, DateTimeCreated, DateDisp) VALUES "
            "('Big', 'Big Description', %s, %s, %s, %s);\n" % (q(stamp[:8]), q(stamp[8:]), q(stamp), q(disp)))
    for folder in sorted(os.listdir(tree)):
        path = os.path.join(tree, folder)
        f.write("BEGIN IMMEDIATE;\n")
        for name in sorted(os.listdir(path), key=str.lower):
            m = time.localtime(os.stat(os.path.join(path, name)).st_mtime)
            date = ("20" if m.tm_year % 100 < 81 else "19") + "%02d%02d%02d" % (m.tm_year % 100, m.tm_mon, m.tm_mday)
            clock = "%d:%02d:%02d %s" % ((m.tm_hour % 12) or 12, m.tm_min, m.tm_sec, "AM" if m.tm_hour < 12 else "PM")
            f.write("INSERT INTO FileTable (GroupName, FileName, FileLocation, FileDescription, FileKeyword, "
                    "FileType, Comments, Date, Time, DateTimeCreated, DateDisp) VALUES ('Big', %s, %s, %s, %s, %s, "
                    "'', %s, %s, %s, %s);\n" % (q(name), q(path), q(name + " Description"), q(folder),
                    q(cats.get(name.rsplit(".", 1)[-1], "Miscellaneous")), q(date), q(clock), q(stamp), q(disp)))
        f.write("COMMIT;\n")
PY
sqlite3 "$WORK/shell/FileTabl.MDB" < "$WORK/schema.sql"
cat "$WORK/import.sql" > /dev/null

printf '%-32s %15s   %15s   %s\n' "seconds (wall, processor)" "tarnby-cli" "sqlite3" "ratios"
t=$(measure "$CLI" group import Big "$TREE" --home "$WORK/tarnby")
s=$(measure sqlite3 "$WORK/shell/FileTabl.MDB" ".read $WORK/import.sql")
row "import of $N files" "$t" "$s"
count=$("$CLI" group files Big --home "$WORK/tarnby" | wc -l)
[ "$count" -eq "$N" ] || { echo "tarnby-cli lists $count entries, not $N"; exit 1; }

for key in id group name type date keyword; do
  case $key in
    id) order="[ID]" ;; group) order="[GroupName], [ID]" ;; name) order="[FileName], [ID]" ;;
    type) order="[FileType], [ID]" ;; date) order="[Date], [ID]" ;; keyword) order="[FileKeyword], [ID]" ;;
  esac
  t=$(measure "$CLI" group files Big --sort "$key" --home "$WORK/tarnby")
  s=$(measure sqlite3 -separator $'\t' "$WORK/shell/FileTabl.MDB" \
      "SELECT * FROM [FileTable] WHERE [GroupName] = 'Big' ORDER BY $order")
  row "sorted listing by $key" "$t" "$s"
done

# What every run above pays before its first row: starting each program.
t=$(measure "$CLI" group list --home "$WORK/schema")
s=$(measure sqlite3 "$WORK/schema/FileTabl.MDB" "SELECT COUNT(*) FROM [GroupTable]")
row "start (an empty catalogue)" "$t" "$s"

t=$(measure "$CLI" group find --name file05 --home "$WORK/tarnby")
s=$(measure sqlite3 "$WORK/shell/FileTabl.MDB" \
    "SELECT * FROM [FileTable] WHERE [FileName] >= 'file05' ORDER BY [FileName], [ID] LIMIT 1")
row "nearest match (whole process)" "$t" "$s"
"$BUILD_DIR/bench/tarnby-bench-organizer" "$WORK/tarnby" Big
