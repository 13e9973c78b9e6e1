#!/usr/bin/env bash
# first-run.sh [RELEASE]: goes from a fresh clone to the demo's pictures, and on to passed tests, in a bare root of bookworm
# (the default) or trixie. Prints what each stage takes: seconds on the clock, and of CPU. The aims are 3 minutes to the
# first picture and 6 to passed tests on two idle cores, without the installation of packages. Needs root.
set -euo pipefail
cd "$(dirname "$0")/.."
[ "${1:-}" = --inside ] || exec scripts/on.sh --bare "${1:-bookworm}" scripts/first-run.sh --inside

TIMEFORMAT='%R %U %S'
rows=()

# stage NAME COMMAND...
stage() {
  local spent
  echo "== $1"
  spent=$({ time "${@:2}" >&3 2>&4; } 2>&1)
  rows+=("$1|$spent")
}

exec 3>&1 4>&2
stage "packages of the demo" scripts/setup.sh demo
stage "build of the demo" scripts/build.sh demo dev zelvano-demo
stage "a short session of the demo" scripts/demo.sh --script demo/smoke.script
stage "packages of the tests" scripts/setup.sh test
stage "build of the tests" scripts/build.sh test dev
stage "tests" scripts/test.sh

printf '\n%-30s %8s %8s\n' stage "clock s" "CPU s"
printf '%s\n' "${rows[@]}" | awk -F '[| ]' '
  { name = $0; sub("[|].*", "", name); clock = $(NF - 2); cpu = $(NF - 1) + $NF }
  { printf "%-30s %8.0f %8.0f\n", name, clock, cpu }
  name !~ /^packages/ { clocks += clock; cpus += cpu }
  name ~ /session/ { printf "%-30s %8.0f %8.0f\n", "= pictures, without packages", clocks, cpus }
  END { printf "%-30s %8.0f %8.0f\n", "= tests, without packages", clocks, cpus }'
echo "$(nproc) cores; load average $(cut -d ' ' -f 1 /proc/loadavg) at the end."
