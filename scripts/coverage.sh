#!/usr/bin/env bash
# Prints which lines and branches the tests reach, by folder, and the files with the most unreached lines. Arguments go
# to ctest, for example "-R Zelvano". build/coverage/index.html shows each line.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
scripts/build.sh check coverage
rm -rf build/coverage/profiles
ctest --preset coverage "$@"

cd build/coverage
llvm-profdata merge -sparse profiles/*.profraw -o tests.profdata
mapfile -t objects < <(find . -name 'libZelvano*.so' -printf '-object\n%p\n')
llvm_cov() { llvm-cov "$1" -instr-profile=tests.profdata "${objects[@]}" -ignore-filename-regex="^$root/build/" "${@:2}"; }
llvm_cov show -format=html -show-branches=count -output-dir=. >/dev/null

# A row of the report: 1 file, 8 lines, 9 missed lines, 11 branches, 12 missed branches.
llvm_cov report >report.txt
echo '| folder | lines | branches |'
echo '| --- | --- | --- |'
awk '
  function share(count, missed) { return count ? sprintf("%.1f %% of %d", 100 * (count - missed) / count, count) : "-" }
  function row(name) { return "| " name " | " share(lines[name], missed[name]) " | " share(branches[name], untaken[name]) " |" }
  function add(name) { lines[name] += $8; missed[name] += $9; branches[name] += $11; untaken[name] += $12 }
  $1 ~ /\.(cpp|h)$/ { sub("/[^/]*$", "", $1); add($1); add("all") }
  END {
    for (name in lines) if (name != "all") print row(name) | "sort"
    close("sort")
    print row("all")
  }' report.txt
echo
echo 'Unreached lines by file:'
awk '$1 ~ /\.(cpp|h)$/ { printf "  %4d %s\n", $9, $1 }' report.txt | sort -rn | head -n 8
