#!/usr/bin/env bash
# fuzz.sh [SECONDS]: runs each fuzzer for SECONDS, 20 by default, or for ten million inputs. New inputs stay in
# build/fuzz/learnt. A failing input is written to build/fuzz/found: add it to fuzz/corpus together with the fix.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-20}
scripts/build.sh check fuzz zelvano_fuzz

export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1

# fuzz CORPUS
fuzz() {
  local corpus=$1 name
  name=$(basename "$corpus")
  local learnt=build/fuzz/learnt/$name found=build/fuzz/found/$name log=build/fuzz/$name.log
  mkdir -p "$learnt" "$found"
  if ! timeout "$((seconds + 60))" "build/fuzz/fuzz/fuzz_$name" "$learnt" "$corpus" -max_total_time="$seconds" \
    -runs=10000000 -max_len=16384 -timeout=10 -artifact_prefix="$found/" >"$log" 2>&1; then
    tail -n 60 "$log" >&2
    echo "fuzz_$name failed; the input is in $found" >&2
    return 255 # Ends xargs.
  fi
  echo "$name: $(grep '^Done' "$log")"
}
export -f fuzz
export seconds
echo "Fuzzing for $seconds s each"
printf '%s\0' fuzz/corpus/*/ | xargs -0 -P "$(nproc)" -I {} bash -c 'fuzz "$1"' bash {}
