#!/usr/bin/env bash
# Format and lint of all of the project's own files. Needs the dev build: it reads its compile commands.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

mapfile -t sources < <(git ls-files '*.cpp' '*.h')
clang-format --dry-run --Werror "${sources[@]}"

# The flags of the build are gcc's; clang-tidy is told not to mind those that it does not know.
git ls-files 'src/*.cpp' 'demo/*.cpp' 'sandbox/*.cpp' |
  xargs -P "$(nproc)" -n 4 clang-tidy -p build/dev --quiet --extra-arg=-Wno-unknown-warning-option

cppcheck --quiet --error-exitcode=1 --inline-suppr --language=c++ --std=c++20 \
  --enable=warning,performance,portability --suppressions-list=scripts/cppcheck.txt \
  --library=qt -DZELVANOCORE_EXPORT= -DZELVANOUI_EXPORT= -DZELVANOSANDBOX_EXPORT= \
  '-DQ_DISABLE_COPY_MOVE(x)=' '-DZV_LOG(...)=' \
  src demo sandbox examples

scripts/lint-qml.sh

bash -n scripts/*.sh .ci/run sandbox/media/*.sh
