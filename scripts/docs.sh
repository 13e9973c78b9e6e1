#!/usr/bin/env bash
# Builds the documents: the reference in build/docs/html, docs/api.txt, and the code in the documents that is cut from
# the examples. With --check it changes nothing in the tree, but fails where something has to be renewed.
set -euo pipefail
cd "$(dirname "$0")/.."

docs/snippets.py "$@"
scripts/api.sh "$@"
echo "The reference is build/docs/html/index.html."
