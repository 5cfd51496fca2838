#!/usr/bin/env bash
# The search walk against find and fd on a generated tree of about 20,000
# folders and 200,000 files (bench/README.md).
#   bench/search.sh [BUILD]      TREE=/tmp/tarnby-bench/search-tree RUNS=3
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${1:-build}
TREE=${TREE:-/tmp/tarnby-bench/search-tree}
RUNS=${RUNS:-3}
ninja -C "$BUILD" -j2 tarnby-cli bench_search bench_search_window >/dev/null
CLI=$BUILD/src/cli/tarnby-cli

# 20 x 20 x 50 folders (20,420 with the upper levels), ten files in each
# leaf: one name in a hundred ends in .xwd, in any case.
if [ ! -e "$TREE/.complete" ]; then
  rm -rf "$TREE"
  echo "making the tree in $TREE ..."
  python3 - "$TREE" <<'PY'
import os, sys
root = sys.argv[1]
exts = ['jpg', 'txt', 'bmp', 'png', 'doc', 'tif', 'html', 'c', 'h', 'dat', 'XWD', 'xwd', 'Jpg', 'PNG', 'log']
n = 0
for a in range(20):
    for b in range(20):
        for c in range(50):
            d = os.path.join(root, 'top%02d' % a, 'Mid%02d' % b, 'leaf%02d' % c)
            os.makedirs(d)
            for f in range(10):
                ext = exts[n % 10] if n % 100 else exts[10 + (n // 100) % 2]
                open(os.path.join(d, 'file%06d.%s' % (n, ext)), 'w').close()
                n += 1
PY
  touch "$TREE/.complete"
fi

# Best wall time of RUNS runs of a command, with the processor time (user +
# system, all threads) of that run: "WALL CPU", in seconds.
best() {
  local best= cpu=
  for _ in $(seq "$RUNS"); do
    local t
    t=$( { TIMEFORMAT='%R %U %S'; time "$@" >/dev/null 2>&1; } 2>&1 )
    read -r wall user sys <<<"$t"
    if [ -z "$best" ] || [ "$(echo "$wall < $best" | bc -l)" = 1 ]; then
      best=$wall
      cpu=$(echo "$user + $sys" | bc -l)
    fi
  done
  echo "$best $cpu"
}

# Warm the cache.
find "$TREE" >/dev/null

line() { read -r wall cpu <<<"$2"; printf '%-50s %7.3f s wall %7.3f s processor\n' "$1" "$wall" "$cpu"; }
ratio() { printf '%-50s %7.2f x\n' "$1" "$(echo "${2%% *} / ${3%% *}" | bc -l)"; }

echo "folders: $(find "$TREE" -type d | wc -l), files: $(find "$TREE" -type f | wc -l); $(uptime | sed 's/.*load/load/')"
t_cli=$(best "$CLI" find '*.xwd' "$TREE")
t_find=$(best find "$TREE" -iname '*.xwd')
line "tarnby-cli find '*.xwd'" "$t_cli"
line "find -iname '*.xwd'" "$t_find"
if command -v fdfind >/dev/null; then
  t_fd=$(best fdfind -u -i -g '*.xwd' "$TREE")
  line "fdfind -u -i -g '*.xwd'" "$t_fd"
else
  echo "fdfind is not installed (apt-get install fd-find): left out"
fi

six='*.xwd;*.jpg;*.txt;*.bmp;*.png;*.doc'
t_cli6=$(best "$CLI" find "$six" "$TREE")
t_find6=$(best find "$TREE" '(' -iname '*.xwd' -o -iname '*.jpg' -o -iname '*.txt' -o -iname '*.bmp' \
  -o -iname '*.png' -o -iname '*.doc' ')')
line "tarnby-cli find (six patterns)" "$t_cli6"
line "find with six -iname" "$t_find6"

echo
ratio "tarnby-cli / find, one pattern" "$t_cli" "$t_find"
if [ -n "${t_fd:-}" ]; then ratio "tarnby-cli / fdfind, one pattern" "$t_cli" "$t_fd"; fi
ratio "tarnby-cli / find, six patterns" "$t_cli6" "$t_find6"

# Agreement: the same files, whatever the order.
diff <("$CLI" find '*.xwd' "$TREE" | awk '/^##/{d=substr($0,3);next}{print d "/" $0}' | sort) \
     <(find "$TREE" -type f -iname '*.xwd' | sort) >/dev/null && echo "tarnby-cli and find list the same files"

echo
"$BUILD/bench/bench_search" "$TREE"
# The same walk in the painted browser: the interface thread's longest stall.
if command -v xvfb-run >/dev/null; then
  xvfb-run -a -s "-screen 0 1280x900x24" "$BUILD/bench/bench_search_window" "$TREE" 2>/dev/null
else
  echo "xvfb-run is not installed (apt-get install xvfb): the window's stall left out"
fi
