#!/usr/bin/env bash
# Looks at what the library does to files and sockets on the host's main thread, over twenty viewings: it may write the
# store of the identity, and a byte that wakes the networking thread. Everything else fails.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset package >/dev/null
cmake --build --preset package --target soak
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if ! strace -o "$work/try" true 2>"$work/stderr"; then
  echo "Not looked at: nothing can be traced here ($(tail -n 1 "$work/stderr"))."
  exit 0
fi

# One file of calls a thread; the main thread's has the lowest number.
TMPDIR=$work strace -ff -o "$work/calls" -e trace=%network,%file build/package/bench/soak 20 >/dev/null
main=$(find "$work" -name 'calls.*' | sort -V | head -n 1)
# From the making of the store's folder on the calls are the library's, but for the program's own counting.
allowed='"/[^"]*/soak-[^"]*"|"/proc/self/(task|fd)"|newfstatat\([0-9]+, ""'   # The store, the counting, its handles.
allowed+='|sendto\([0-9]+, "\\1", 1, MSG_NOSIGNAL|socketpair\('             # The wake-up.
allowed+='|"/etc/(os-release|localtime)"|"[^"]*openssl.cnf"|overcommit_memory' # The libraries below, once.
allowed+='|^[-+]{3} '                                                        # Signals and the end.
calls=$(sed '1,/mkdir(.*soak-/d' "$main")
[ -n "$calls" ] || { echo "The main thread's calls were not found." >&2; exit 1; }
others=$(grep -vE "$allowed" <<<"$calls" || true)
if [ -n "$others" ]; then
  echo "Not allowed on the main thread:" >&2
  echo "$others" >&2
  exit 1
fi
echo "$(grep -c 'sendto(' <<<"$calls") wake-ups, $(grep -c '/soak-' <<<"$calls") calls for the store," \
  "nothing else among $(wc -l <<<"$calls") calls of the main thread"
