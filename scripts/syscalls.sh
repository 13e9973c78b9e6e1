#!/usr/bin/env bash
# Traces the file and socket calls of the host's main thread during twenty viewings. Allowed are writes of the stored
# identity and the byte that wakes the networking thread. Any other call fails the check.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh check package soak
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if ! strace -o "$work/try" true 2>"$work/stderr"; then
  echo "Skipped: strace cannot trace here ($(tail -n 1 "$work/stderr"))."
  exit 0
fi

# strace writes one file for each thread; the main thread's has the lowest number.
TMPDIR=$work strace -ff -o "$work/calls" -e trace=%network,%file build/package/bench/soak 20 >/dev/null
main=$(find "$work" -name 'calls.*' | sort -V | head -n 1)
# The library's calls begin after mkdir of the store's folder. The soak program counts its handles in between.
allowed='"/[^"]*/soak-[^"]*"|"/proc/self/(task|fd)"|(newfstatat|statx)\([0-9]+, ""' # The store and the count of handles.
allowed+='|sendto\([0-9]+, "\\1", 1, MSG_NOSIGNAL|socketpair\('             # The wake-up.
allowed+='|"/etc/(os-release|localtime)"|"[^"]*openssl.cnf"|overcommit_memory' # Qt, libc and OpenSSL, once.
allowed+='|^[-+]{3} '                                                        # Signals and the exit.
calls=$(sed '1,/mkdir(.*soak-/d' "$main")
[ -n "$calls" ] || { echo "The trace holds no calls of the main thread." >&2; exit 1; }
others=$(grep -vE "$allowed" <<<"$calls" || true)
if [ -n "$others" ]; then
  echo "Not allowed on the main thread:" >&2
  echo "$others" >&2
  exit 1
fi
echo "$(grep -c 'sendto(' <<<"$calls") wake-ups, $(grep -c '/soak-' <<<"$calls") calls for the store," \
  "nothing else among $(wc -l <<<"$calls") calls of the main thread"
