#!/usr/bin/env bash
# test.sh [PRESET] [OPTION...]: builds everything and runs the tests; options go to ctest, for example "-R Zelvano". The
# preset is dev, or asan or tsan for the sanitizers, or package: then the tests of dev load its optimised libraries.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=dev
libraries=
[[ ${1:-} =~ ^(dev|asan|tsan|package)$ ]] && { preset=$1; shift; }
if [ "$preset" = package ]; then
  scripts/build.sh check package
  libraries=$PWD/build/package/src:$PWD/build/package/src/mpv:$PWD/build/package/sandbox
  preset=dev
fi
scripts/build.sh test "$preset"
[ -z "$libraries" ] || export LD_LIBRARY_PATH=$libraries
ctest --preset "$preset" "$@"
