#!/usr/bin/env bash
# Checks format, lint and headers of the project's own files. Configures the dev build: it reads its compile commands.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset dev >/dev/null

git ls-files -z '*.cpp' '*.h' | xargs -0 clang-format --dry-run --Werror

# Each public header compiles alone.
cmake --build --preset dev --target all_verify_interface_header_sets

# The compile commands are gcc's: clang-tidy does not know all of its warnings.
git ls-files 'src/*.cpp' 'demo/*.cpp' 'sandbox/*.cpp' |
  xargs -P "$(nproc)" -n 4 clang-tidy -p build/dev --quiet --extra-arg=-Wno-unknown-warning-option

# Headers of Qt and the standard library are not on cppcheck's include path, and it takes a QPointer for an integer.
cppcheck --quiet --error-exitcode=1 --inline-suppr --language=c++ --std=c++20 \
  --enable=warning,performance,portability --library=qt \
  --suppress=missingInclude --suppress=missingIncludeSystem --suppress=CastIntegerToAddressAtReturn \
  -DZELVANOCORE_EXPORT= -DZELVANOUI_EXPORT= -DZELVANOSANDBOX_EXPORT= \
  '-DQ_DISABLE_COPY_MOVE(x)=' '-DZV_LOG(...)=' \
  -I include src demo sandbox examples

# The module's build describes the types of the modules ZelvanoUI and ZelvanoUI.Interface.
cmake --build --preset dev --target ZelvanoQml
git ls-files -z '*.qml' | xargs -0 timeout 300 "$(qmake6 -query QT_HOST_BINS)/qmllint" \
  -I build/dev/qml -I build/dev/interface

bash -n scripts/*.sh .ci/run cmake/*.sh sandbox/media/*.sh
