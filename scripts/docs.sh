#!/usr/bin/env bash
# Builds the documents: the reference in build/docs/html, the list docs/api.txt, and the code in the documents, which is
# cut from the examples. With --check it changes nothing in the tree and fails where something is out of date.
set -euo pipefail
cd "$(dirname "$0")/.."
case "${1:-}" in
  '' | --check) ;;
  *) echo "usage: scripts/docs.sh [--check]" >&2; exit 2 ;;
esac

docs/snippets.py "$@"
scripts/build.sh check dev ZelvanoQml ZelvanoMpvQml # Writes the description of the QML types.
rm -rf build/docs
mkdir -p build/docs
ZELVANO_DOCS_OUTPUT=build/docs ZELVANO_DOCS_INPUT="docs/reference.md include/ZelvanoUI src/qml" doxygen docs/Doxyfile
scripts/api.py build/docs/xml build/dev/qml/ZelvanoUI/zelvanoui.qmltypes build/dev/qml/ZelvanoUI/Mpv/zelvanouimpv.qmltypes >build/docs/api.txt
if [ "${1:-}" != --check ]; then
  cp build/docs/api.txt docs/api.txt
else
  diff -u docs/api.txt build/docs/api.txt ||
    { echo "The public interface has changed: scripts/docs.sh renews docs/api.txt." >&2; exit 1; }
fi
echo "The reference is build/docs/html/index.html."
