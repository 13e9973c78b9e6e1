#!/usr/bin/env bash
# qmllint over all of the project's QML files, without a warning. Needs the dev build, where the module stands.
set -euo pipefail
cd "$(dirname "$0")/.."

query() { qmake6 -query "$1"; }
tools=$(query QT_HOST_LIBEXECS)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# What the library registers by itself for its interface resources stands in no module: described here for the linter.
module=$work/ZelvanoUI/Interface
mkdir -p "$module"
printf 'module ZelvanoUI.Interface\ntypeinfo types.qmltypes\ndepends QtQuick\n' >"$module/qmldir"
for header in $(grep -l Q_OBJECT src/ui/*.h); do
  "$tools/moc" --output-json -o "$work/$(basename "$header").cpp" "$header"
done
"$tools/moc" --collect-json -o "$work/all.json" "$work"/*.cpp.json
grep -rhoP 'qmlRegisterType<\K\w+' src/ui | sort -u | python3 -c '
import json, sys
elements = sys.stdin.read().split()
files = json.load(open(sys.argv[1]))
for cls in (cls for file in files for cls in file["classes"]):
    if cls["className"] in elements:
        cls.setdefault("classInfos", []).append({"name": "QML.Element", "value": cls["className"]})
    for base in cls.get("superClasses", []):  # A base class counts only under its full name.
        base["name"] = ("zelvano::" if base["name"].startswith("ZV") else "") + base["name"]
json.dump(files, open(sys.argv[1], "w"))' "$work/all.json"
foreign=$(ls "$(query QT_INSTALL_LIBS)"/metatypes/qt6{core,gui,qml,quick}_*_metatypes.json | paste -sd,)
"$tools/qmltyperegistrar" --import-name ZelvanoUI.Interface --major-version 1 --minor-version 0 \
  --foreign-types "$foreign" --generate-qmltypes "$module/types.qmltypes" -o "$work/registrations.cpp" "$work/all.json"

git ls-files -z '*.qml' | xargs -0 timeout 300 "$(query QT_HOST_BINS)/qmllint" -I build/dev/qml -I "$work"
