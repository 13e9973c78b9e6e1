#!/usr/bin/env bash
# Runs the benchmarks and writes their tables into docs/performance.md. With --short it only sees that they run.
# All load goes to 127.0.0.1.
set -euo pipefail
cd "$(dirname "$0")/.."
short=false
case "${1:-}" in
  --short) short=true ;;
  '') ;;
  *) echo "usage: scripts/bench.sh [--short]" >&2; exit 2 ;;
esac

scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release --target zelvano_bench
results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT

# run PROGRAM OPTION...: repetitions of different benchmarks take turns, so that a change of the machine's mood hits
# them alike.
run() {
  local program=$1
  shift
  timeout 120 "build/release/bench/$program" --benchmark_enable_random_interleaving=true \
    --benchmark_counters_tabular=true --benchmark_out="$results/$program.json" --benchmark_out_format=json "$@"
}

# session TIMES: each in a process of its own.
session() {
  for _ in $(seq "$1"); do
    timeout 60 build/release/bench/bench_session | tee -a "$results/bench_session.jsonl"
  done
}

# The views draw into memory: what is measured is not the screen.
export QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software

if $short; then
  run bench_player_event --benchmark_repetitions=1
  run bench_delivery --benchmark_repetitions=1
  run bench_ready_answer --benchmark_repetitions=1 --benchmark_min_time=0.02
  run bench_list_view --benchmark_repetitions=1 --benchmark_min_time=0.02
  session 1
  exit
fi

load=$(cut -d ' ' -f 1 /proc/loadavg)
run bench_player_event --benchmark_repetitions=15
run bench_delivery --benchmark_repetitions=25
run bench_ready_answer --benchmark_repetitions=15 --benchmark_min_time=0.05
run bench_list_view --benchmark_repetitions=5 --benchmark_min_time=0.05
session 7

cpu=$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)
virtual=$(grep -q '^flags.* hypervisor' /proc/cpuinfo && echo ', a virtual machine' || true)
machine="$(date -u +%Y-%m-%d), ${cpu:-$(uname -m)}, $(nproc) cores$virtual, Qt $(qmake6 -query QT_VERSION), \
libcurl $(curl-config --version | cut -d ' ' -f 2); load average $load when it began."
python3 bench/tables.py "$results" "$machine" >"$results/tables.md"
{
  sed '/<!-- generated: begin/q' docs/performance.md
  echo
  cat "$results/tables.md"
  echo
  sed -n '/<!-- generated: end/,$p' docs/performance.md
} >"$results/performance.md"
cp "$results/performance.md" docs/performance.md
echo "docs/performance.md is up to date."
