#!/usr/bin/env bash
# Checks format, lint and headers of the project's own files. Configures the dev build: it reads its compile commands.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset dev >/dev/null

query() { qmake6 -query "$1"; }

# describe_interface FOLDER: writes the QML module ZelvanoUI.Interface for qmllint. The library registers these types at
# run time for its interface resources, so no build step describes them.
describe_interface() {
  local module=$1/ZelvanoUI/Interface tools header foreign
  tools=$(query QT_HOST_LIBEXECS)
  mkdir -p "$module"
  printf 'module ZelvanoUI.Interface\ntypeinfo types.qmltypes\ndepends QtQuick\n' >"$module/qmldir"
  for header in $(grep -lE 'Q_OBJECT' -r src/ui include/ZelvanoUI --include='*.h'); do
    "$tools/moc" --output-json -o "$1/$(basename "$header").cpp" "$header"
  done
  "$tools/moc" --collect-json -o "$1/all.json" "$1"/*.cpp.json
  grep -rhoP 'qmlRegisterType<\K\w+' src/ui | sort -u | python3 -c '
import json, sys
elements = sys.stdin.read().split()
files = json.load(open(sys.argv[1]))
for cls in (cls for file in files for cls in file["classes"]):
    if cls["className"] in elements:
        cls.setdefault("classInfos", []).append({"name": "QML.Element", "value": cls["className"]})
    for base in cls.get("superClasses", []):  # The registrar finds a base class by its full name only.
        base["name"] = ("zelvano::" if base["name"].startswith("ZV") else "") + base["name"]
json.dump(files, open(sys.argv[1], "w"))' "$1/all.json"
  foreign=$(ls "$(query QT_INSTALL_LIBS)"/metatypes/qt6{core,gui,qml,quick}_*_metatypes.json | paste -sd,)
  "$tools/qmltyperegistrar" --import-name ZelvanoUI.Interface --major-version 1 --minor-version 0 \
    --foreign-types "$foreign" --generate-qmltypes "$module/types.qmltypes" -o "$1/registrations.cpp" "$1/all.json"
}

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

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
describe_interface "$work"
cmake --build --preset dev --target ZelvanoQml
git ls-files -z '*.qml' | xargs -0 timeout 300 "$(query QT_HOST_BINS)/qmllint" -I build/dev/qml -I "$work"

bash -n scripts/*.sh .ci/run cmake/*.sh sandbox/media/*.sh
