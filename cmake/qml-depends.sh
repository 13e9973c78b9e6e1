#!/usr/bin/env bash
# Prints the Debian packages that a folder of .qml files, or a QML module, needs, one a line: those that own the modules
# imported, by its .qml files, by its qmldir, or by a module that they import. Fails when an import of the folder's own
# is owned by no package.
set -euo pipefail
folder=${1:?usage: cmake/qml-depends.sh FOLDER}

copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
find "$folder" -name '*.qml' -exec cp -t "$copy" {} +
# What a module written in C++ imports stands in its qmldir alone.
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
    ZelvanoUI.Interface) ;; # Registered by the library itself.
    *)
      if [ "$path" != - ]; then
        dpkg -S "$path/qmldir" | sed 's/:.*//'
      elif grep -qE "^import $module( |;|\$)" "$copy"/*.qml; then
        echo "qml-depends.sh: $folder imports $module, which no installed package owns" >&2
        exit 1
      fi # Else an import of a module of Qt's: its package declares what it needs.
      ;;
  esac
done <<<"$scanned" | sort -u
