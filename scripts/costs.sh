#!/usr/bin/env bash
# Counts instructions and allocations of an event and of reading an answer, and fails when a figure of bench/costs.txt
# has grown by more than 3 %. With --update it rewrites that file. Counts hardly depend on the machine, but they do on
# the versions of Qt and libcurl: the file holds those of Debian 12. All load goes to 127.0.0.1.
set -euo pipefail
cd "$(dirname "$0")/.."
case "${1:-}" in
  --update | '') ;;
  *) echo "usage: scripts/costs.sh [--update]" >&2; exit 2 ;;
esac

scripts/build.sh check package costs
dumps=$(mktemp -d)
trap 'rm -rf "$dumps"' EXIT
timeout 120 valgrind -q --tool=callgrind --separate-threads=yes --instr-atstart=no \
  --callgrind-out-file="$dumps/%p" build/package/bench/costs
python3 bench/costs.py "$dumps" "$@"
