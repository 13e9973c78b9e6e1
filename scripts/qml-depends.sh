#!/usr/bin/env bash
# Prints the Debian packages that the .qml files of a folder need, one a line: those that own the modules imported, by
# the files themselves or by a module that they import. Fails when the files import a module that no package owns.
set -euo pipefail
folder=${1:?usage: scripts/qml-depends.sh FOLDER}

scan() {
  "$(qmake6 -query QT_INSTALL_LIBEXECS)/qmlimportscanner" -rootPath "$folder" \
    -importPath "$(qmake6 -query QT_INSTALL_QML)" | python3 -c '
import json, sys
for entry in json.load(sys.stdin):
    if entry["type"] == "module":
        print(entry["name"], entry.get("path", "-"))'
}

scanned=$(scan)
while read -r module path; do
  case $module in
    ZelvanoUI) echo qml6-module-zelvanoui ;;
    ZelvanoUI.Interface) ;; # Registered by the library itself.
    *)
      if [ "$path" != - ]; then
        dpkg -S "$path/qmldir" | sed 's/:.*//'
      elif grep -rqE --include='*.qml' "^import $module( |;|\$)" "$folder"; then
        echo "qml-depends.sh: $folder imports $module, which no installed package owns" >&2
        exit 1
      fi # Else an import of a module of Qt's: its package declares what it needs.
      ;;
  esac
done <<<"$scanned" | sort -u
