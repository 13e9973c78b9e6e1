#!/usr/bin/env bash
# Checks format, lint and headers of the project's own files. Reads the compile commands of the dev build.
set -euo pipefail
cd "$(dirname "$0")/.."

# Each public header compiles alone; the module's build describes the types of the QML modules.
scripts/build.sh check dev all_verify_interface_header_sets ZelvanoQml ZelvanoMpvQml

echo "clang-format"
git ls-files -z '*.cpp' '*.h' | xargs -0 clang-format --dry-run --Werror

# The build compiles each folder as one file, and so does clang-tidy, which takes a third of the time. The compile
# commands are gcc's: clang-tidy does not know all of its warnings. Like a system's headers, what moc writes is not ours.
echo "clang-tidy"
sed -nE 's/^ *"file": "(.*)",?$/\1/p' build/dev/compile_commands.json |
  grep -E -e "^$PWD/(src|demo|sandbox)/" -e "^$PWD/build/dev/(src|demo|sandbox)/.*/unity_[^/]*$" >build/dev/tidy.txt
xargs -a build/dev/tidy.txt -P "$(nproc)" -n 1 sh -c '
  clang-tidy -p build/dev --quiet --checks=-bugprone-suspicious-include \
    --extra-arg=-Wno-unknown-warning-option \
    --extra-arg=--system-header-prefix=moc_ --extra-arg=--system-header-prefix=ZelvanoUI/moc_ "$0" || exit 255
  echo "  ${0#'"$PWD"'/}"'

echo "cppcheck"
# Headers of Qt and the standard library are not on cppcheck's include path, and it takes a QPointer for an integer.
cppcheck --quiet --error-exitcode=1 --inline-suppr --language=c++ --std=c++20 \
  --enable=warning,performance,portability --library=qt \
  --suppress=missingInclude --suppress=missingIncludeSystem --suppress=CastIntegerToAddressAtReturn \
  -DZELVANOCORE_EXPORT= -DZELVANOUI_EXPORT= -DZELVANOMPV_EXPORT= -DZELVANOSANDBOX_EXPORT= \
  '-DQ_DISABLE_COPY_MOVE(x)=' '-DZV_LOG(...)=' \
  -I include src demo sandbox examples

echo "qmllint"
git ls-files -z '*.qml' | xargs -0 timeout 300 "$(qmake6 -query QT_HOST_BINS)/qmllint" \
  -I build/dev/qml -I build/dev/interface

bash -n scripts/*.sh .ci/run cmake/*.sh sandbox/media/*.sh
