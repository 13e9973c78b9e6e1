#!/usr/bin/env bash
# Builds everything and runs the tests. Arguments go to ctest, for example "-R Zelvano".
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
export QTWEBENGINE_DISABLE_SANDBOX=1 # Chromium refuses to run as root with its sandbox on.
cmake --preset dev >/dev/null
cmake --build --preset dev
ctest --preset dev "$@"
