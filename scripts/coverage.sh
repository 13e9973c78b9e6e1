#!/usr/bin/env bash
# Says which lines and branches the tests reach, by folder. Arguments go to ctest, "-R Zelvano" say. With
# build/coverage/index.html each line can be looked at.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
export QTWEBENGINE_DISABLE_SANDBOX=1 # Chromium refuses to run as root with its sandbox on.
cmake --preset coverage >/dev/null
cmake --build --preset coverage
rm -rf build/coverage/profiles
ctest --preset coverage "$@"

cd build/coverage
llvm-profdata merge -sparse profiles/*.profraw -o tests.profdata
mapfile -t objects < <(find . -name 'libZelvano*.so' -printf '-object\n%p\n')
llvm_cov() { llvm-cov "$1" -instr-profile=tests.profdata "${objects[@]}" -ignore-filename-regex='_autogen/|\.rcc/' "${@:2}"; }
llvm_cov show -format=html -show-branches=count -output-dir=. >/dev/null
llvm_cov export -summary-only | python3 ../../scripts/coverage.py
