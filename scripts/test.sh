#!/usr/bin/env bash
# test.sh [PRESET] [OPTION...]: builds everything and runs the tests; options go to ctest, for example "-R Zelvano". The
# preset is dev, or release, or asan or tsan for the sanitizers.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=dev
[[ ${1:-} =~ ^(dev|release|asan|tsan)$ ]] && { preset=$1; shift; }
scripts/build.sh test "$preset"
export QTWEBENGINE_DISABLE_SANDBOX=1 # Chromium refuses to run as root with its sandbox on.
ctest --preset "$preset" "$@"
