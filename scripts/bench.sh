#!/usr/bin/env bash
# Runs the benchmarks, writes their tables into docs/performance.md and draws its charts. All load goes to 127.0.0.1.
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/release
scripts/build.sh check release zelvano_bench zelvano-demo
results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT

# run PROGRAM OPTION...: interleaves the repetitions of different benchmarks, so that a slow phase of the machine affects
# all of them.
run() {
  local program=$1
  shift
  timeout 120 "$build/bench/$program" --benchmark_enable_random_interleaving=true \
    --benchmark_counters_tabular=true --benchmark_out="$results/$program.json" --benchmark_out_format=json "$@"
}

# line PROGRAM TIMES: runs the program TIMES times; each run prints one line.
line() {
  for _ in $(seq "$2"); do
    timeout 60 "$build/bench/$1" | tee -a "$results/$1.jsonl"
  done
}

# stalls SCRIPT TIMES: runs a demo session under Xvfb. It leaves out screenshots, because they stall the main thread.
stalls() {
  sed '/^screenshot /d' "$1" >"$results/session.script"
  for i in $(seq "$2"); do # The media backend for the same reason as in scripts/demo.sh.
    env -u QT_QPA_PLATFORM -u QT_QUICK_BACKEND QT_MEDIA_BACKEND=ffmpeg timeout 120 \
      xvfb-run -a -s '-screen 0 1280x1280x24 +extension GLX' "$build/demo/zelvano-demo" --stalls \
      --script "$results/session.script" --defaults "$results/defaults-$i.json" 2>"$results/demo.log" |
      tee -a "$results/stalls.jsonl"
  done
}

# The views draw into memory, so that the figures exclude the screen.
export QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software
[ "$(id -u)" -ne 0 ] || export QTWEBENGINE_DISABLE_SANDBOX=1 # Chromium refuses to run as root with its sandbox on.

load=$(cut -d ' ' -f 1 /proc/loadavg)
run bench_player_event --benchmark_repetitions=15
run bench_delivery --benchmark_repetitions=25
run bench_ready_answer --benchmark_repetitions=15 --benchmark_min_time=0.05
run bench_thumbnails --benchmark_repetitions=25
run bench_list_view --benchmark_repetitions=7 --benchmark_min_time=0.05
line bench_overlay 7
stalls demo/session.script 3
line bench_session 7
mkdir "$results/costs"
timeout 120 valgrind -q --tool=callgrind --separate-threads=yes --instr-atstart=no \
  --callgrind-out-file="$results/costs/%p" "$build/bench/costs"

cpu=$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)
virtual=$(grep -q '^flags.* hypervisor' /proc/cpuinfo && echo ', a virtual machine' || true)
machine="$(date -u +%Y-%m-%d), ${cpu:-$(uname -m)}, $(nproc) cores$virtual, Qt $(qmake6 -query QT_VERSION), \
libcurl $(curl-config --version | cut -d ' ' -f 2); load average $load when it began."
python3 bench/tables.py "$results" "$machine" docs/images >"$results/tables.md"
{
  sed '/<!-- generated: begin/q' docs/performance.md
  echo
  cat "$results/tables.md"
  echo
  sed -n '/<!-- generated: end/,$p' docs/performance.md
} >"$results/performance.md"
cp "$results/performance.md" docs/performance.md
echo "docs/performance.md is up to date."
