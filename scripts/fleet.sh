#!/usr/bin/env bash
# fleet.sh [VIEWERS]: measures what viewers cost a service, writes the tables of docs/fleet.md and draws its charts. All
# load goes to 127.0.0.1.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh check release fleet
results=$(mktemp)
tables=$(mktemp)
trap 'rm -f "$results" "$tables"' EXIT
timeout 600 build/release/bench/fleet "$@" >"$results"
{
  sed '/<!-- generated: begin/q' docs/fleet.md
  echo
  python3 bench/fleet.py "$results" docs/images
  echo
  sed -n '/<!-- generated: end/,$p' docs/fleet.md
} >"$tables"
cp "$tables" docs/fleet.md
echo "docs/fleet.md is up to date."
