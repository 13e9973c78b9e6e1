#!/usr/bin/env bash
# Looks for what grows: soak.sh [VIEWINGS] [MINUTES], 10,000 and 15 unless told. First viewings back to back over real
# HTTP, on a clock that does not wait; then so many minutes of real video in the demo, under Xvfb, with overlay, list
# and a new player every half minute. The service is a process of its own. What the demo's process holds is written down
# every ten seconds.
set -euo pipefail
cd "$(dirname "$0")/.."
viewings=${1:-10000}
minutes=${2:-15}
scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release --target soak zelvano-demo zelvano-sandbox

echo "== $viewings viewings"
build/release/bench/soak "$viewings"

[ "$minutes" -gt 0 ] || exit 0
echo "== $minutes minutes of video"
work=$(mktemp -d)
trap 'kill "${service:-}" 2>/dev/null || true; rm -rf "$work"' EXIT
chmod 700 "$work"
{
  # A round takes a good 20 seconds; the demo is ended when the time is over. A video that has ended tells of no pause,
  # so each round seeks back.
  echo 'wait-for recommendations'
  for _ in $(seq $((minutes * 4))); do
    cat <<'ROUND'
seek 1
play
wait 3000
pause
wait-for overlay
wait 500
swipe left
wait-for hidden
play
wait 1500
pause
wait-for overlay
wait 500
tap 1
wait-for hidden
wait 3000
tap-cell 1
wait 3000
rotate portrait
wait 1000
rotate landscape
wait 1000
restart
wait-for request events ready
wait 1000
ROUND
  done
  echo quit
} >"$work/rounds.script"

export QT_MEDIA_BACKEND=ffmpeg XDG_RUNTIME_DIR=$work
[ "$(id -u)" -ne 0 ] || export QTWEBENGINE_DISABLE_SANDBOX=1 # Chromium refuses to run as root with its sandbox on.
build/release/sandbox/zelvano-sandbox --port 0 >"$work/service.log" &
service=$!
until address=$(grep -om1 '127.0.0.1:[0-9]*' "$work/service.log"); do sleep 0.1; done
xvfb-run -a -s '-screen 0 1280x1280x24 +extension GLX' build/release/demo/zelvano-demo --script "$work/rounds.script" \
  --service "$address" --view list --defaults "$work/defaults.ini" 2>"$work/stderr.log" &
runner=$!
end=$((SECONDS + minutes * 60))
samples=$work/samples
while [ "$SECONDS" -lt "$end" ] && kill -0 "$runner" 2>/dev/null; do
  sleep 10
  demo=$(pgrep -n -x zelvano-demo || true)
  [ -n "$demo" ] && [ -r "/proc/$demo/smaps_rollup" ] || continue
  echo "$SECONDS $(awk '/^Pss_Anon/ {print $2}' "/proc/$demo/smaps_rollup") $(ls "/proc/$demo/task" | wc -l)" \
    "$(ls "/proc/$demo/fd" | wc -l)" >>"$samples"
done
if ! kill -0 "$runner" 2>/dev/null; then
  wait "$runner" || { tail -n 5 "$work/stderr.log" >&2; exit 1; }
fi
pkill -f "zelvano-demo --script $work" || true
wait "$runner" || true
echo "$(grep -c 'POST /events' "$work/service.log") events, of them $(grep -c ' ready ' "$work/service.log") ready"
python3 - "$samples" <<'PY'
import statistics, sys

rows = [[int(word) for word in line.split()] for line in open(sys.argv[1])]
steady = rows[len(rows) // 2:] # The log of events has filled by then.
seconds, memory, threads, descriptors = zip(*steady)
print(f"{len(rows)} samples; in the second half {statistics.linear_regression(seconds, memory).slope * 60:+.0f} kB a "
      f"minute (anonymous memory {min(memory):,} to {max(memory):,} kB), {min(threads)} to {max(threads)} threads, "
      f"{min(descriptors)} to {max(descriptors)} descriptors")
PY
