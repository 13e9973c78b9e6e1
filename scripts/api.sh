#!/usr/bin/env bash
# Builds the reference of what hosts see, the installed headers and the QML elements, into build/docs/html, and lists it
# in docs/api.txt. With --check it writes no list, but fails when the one that is there is not up to date.
set -euo pipefail
cd "$(dirname "$0")/.."
case "${1:-}" in
  '' | --check) ;;
  *) echo "usage: scripts/api.sh [--check]" >&2; exit 2 ;;
esac

scripts/setup.sh
cmake --preset dev >/dev/null
cmake --build --preset dev --target ZelvanoQml # Its description is made when it is built.

# What CMake installs is public. The paths are those of its install rules.
mapfile -t headers < <(find build/dev -name cmake_install.cmake \
  -exec grep -hoP "\"\\Q$PWD\\E/\K(?!build/)[^\"]+\.h(?=\")" {} + | sort -u)
rm -rf build/docs/html build/docs/xml
mkdir -p build/docs
{
  cat docs/Doxyfile
  echo "OUTPUT_DIRECTORY = build/docs"
  echo "STRIP_FROM_PATH = $PWD"
  echo "INPUT = docs/reference.md ${headers[*]} $(ls src/qml/*.h | xargs)"
} | doxygen -

python3 scripts/api.py build/docs/xml build/dev/qml/ZelvanoUI/zelvanoui.qmltypes >build/docs/api.txt
if [ "${1:-}" != --check ]; then
  cp build/docs/api.txt docs/api.txt
else
  diff -u docs/api.txt build/docs/api.txt ||
    { echo "The public interface has changed: scripts/api.sh renews docs/api.txt." >&2; exit 1; }
fi
