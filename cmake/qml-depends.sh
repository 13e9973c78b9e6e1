#!/usr/bin/env bash
# Prints the Debian packages that a folder of .qml files, or a QML module, needs, one on each line. These packages own
# the modules that the .qml files and the qmldir import, directly or through another module. Fails when no package owns
# a direct import.
set -euo pipefail
folder=${1:?usage: cmake/qml-depends.sh FOLDER}

copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
find "$folder" -name '*.qml' -exec cp -t "$copy" {} +
# A module written in C++ lists its imports only in its qmldir.
{
  find "$folder" -name qmldir -exec sed -nE 's/^(depends|import) ([A-Za-z.]+).*/import \2/p' {} +
  echo 'QtObject {}'
} >"$copy/qmldir.qml"

scan() {
  "$(qmake6 -query QT_INSTALL_LIBEXECS)/qmlimportscanner" -rootPath "$copy" \
    -importPath "$(qmake6 -query QT_INSTALL_QML)" | python3 -c '
import json, sys
for entry in json.load(sys.stdin):
    if entry["type"] == "module":
        print(entry["name"], entry.get("path", "-"))'
}

scanned=$(scan)
while read -r module path; do
  case $module in
    '') ;; # Nothing is imported.
    ZelvanoUI) echo qml6-module-zelvanoui ;;
    ZelvanoUI.Mpv) echo libzelvanoui-mpv ;;
    ZelvanoUI.Interface) ;; # Registered by the library itself.
    *)
      if [ "$path" != - ]; then
        dpkg -S "$path/qmldir" | sed 's/:.*//'
      elif grep -qE "^import $module( |;|\$)" "$copy"/*.qml; then
        echo "qml-depends.sh: no installed package owns $module, which $folder imports" >&2
        exit 1
      fi # Otherwise a module of Qt imports it, and its package declares the dependency.
      ;;
  esac
done <<<"$scanned" | sort -u
