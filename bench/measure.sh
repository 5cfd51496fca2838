# Shared by the benchmark scripts: source it after setting WORK, a folder of
# the script's own.

# Runs a command once and prints its wall time and the processor time (user
# and system, of every process it started) in seconds. On a busy machine the
# processor time is the steadier figure: wall time then depends on how many
# threads each program puts in the scheduler's queue.
children_cpu() { # sets CPU
  # Not in a pipeline or $(...): those run the builtin in a new subshell,
  # which has no children of its own.
  times > "$WORK/.times"
  CPU=$(tail -1 "$WORK/.times" | awk '
    function s(x, p) { split(x, p, "m"); sub("s", "", p[2]); return p[1] * 60 + p[2] }
    { printf "%.3f", s($1) + s($2) }')
}
measure() {
  local start end cpu0
  children_cpu
  cpu0=$CPU
  start=$(date +%s.%N)
  "$@" >/dev/null
  end=$(date +%s.%N)
  children_cpu
  awk -v a="$start" -v b="$end" -v c="$cpu0" -v d="$CPU" 'BEGIN { printf "%.3f %.3f\n", b - a, d - c }'
}
