#!/usr/bin/env bash
# test.sh [PRESET] [OPTION...]: builds everything and runs the tests; options go to ctest, for example "-R Zelvano". The
# preset is dev, or release, or asan or tsan for the sanitizers.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=dev
[[ ${1:-} =~ ^(dev|release|asan|tsan)$ ]] && { preset=$1; shift; }
scripts/build.sh test "$preset"
ctest --preset "$preset" "$@"
