#!/usr/bin/env bash
# build.sh demo|test|check PRESET [TARGET...]: installs the packages of that purpose, configures the preset and builds the
# targets, by default all. The other scripts call it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh "$1"
preset=$2
shift 2
echo "Configuring build/$preset"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
cmake --preset "$preset" >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
grep -A 5 'CMake .*Warning' "$log" >&2 || true
echo "Building ${*:-everything} in build/$preset"
NINJA_STATUS='[%f/%t, %e s] ' cmake --build --preset "$preset" ${1:+--target} "$@"
