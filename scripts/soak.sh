#!/usr/bin/env bash
# Looks for memory, threads and descriptors that grow: soak.sh [VIEWINGS] [MINUTES], by default 10,000 and 15. First it
# runs viewings back to back over real HTTP, on a clock that does not wait. Then it plays real video for MINUTES in the
# demo under Xvfb, with overlay and list and a new player every half minute. The service is a separate process. Every
# ten seconds it samples the demo's process.
set -euo pipefail
cd "$(dirname "$0")/.."
viewings=${1:-10000}
minutes=${2:-15}
scripts/build.sh check release soak zelvano-demo zelvano-sandbox

echo "== $viewings viewings"
build/release/bench/soak "$viewings"

[ "$minutes" -gt 0 ] || exit 0
echo "== $minutes minutes of video"
work=$(mktemp -d)
trap 'kill ${service:-} ${demo:-} 2>/dev/null || true; rm -rf "$work"' EXIT
chmod 700 "$work"
{
  # A round takes more than 20 seconds, so the rounds last longer than MINUTES and the script kills the demo. A video that
  # has ended reports no pause, so each round seeks back.
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

# For the same reason as in scripts/demo.sh.
export QT_MEDIA_BACKEND=ffmpeg XDG_RUNTIME_DIR=$work
[ "$(id -u)" -ne 0 ] || export QTWEBENGINE_DISABLE_SANDBOX=1 # Chromium refuses to run as root with its sandbox on.
build/release/sandbox/zelvano-sandbox --port 0 >"$work/service.log" &
service=$!
until address=$(grep -om1 '127.0.0.1:[0-9]*' "$work/service.log"); do sleep 0.1; done
# xvfb-run does not pass signals on, so the shell notes its id before it becomes the demo.
xvfb-run -a -s '-screen 0 1280x1280x24 +extension GLX' sh -c 'echo $$ >"$0"; exec "$@"' "$work/demo.pid" \
  build/release/demo/zelvano-demo --script "$work/rounds.script" --service "$address" --view list \
  --defaults "$work/defaults.json" 2>"$work/stderr.log" &
runner=$!
until [ -s "$work/demo.pid" ]; do
  kill -0 "$runner" 2>/dev/null || { tail -n 5 "$work/stderr.log" >&2; exit 1; }
  sleep 0.1
done
demo=$(cat "$work/demo.pid")
end=$((SECONDS + minutes * 60))
samples=$work/samples
while [ "$SECONDS" -lt "$end" ] && kill -0 "$demo" 2>/dev/null; do
  sleep 10
  [ -r "/proc/$demo/smaps_rollup" ] || continue
  echo "$SECONDS $(awk '/^Pss_Anon/ {print $2}' "/proc/$demo/smaps_rollup") $(ls "/proc/$demo/task" | wc -l)" \
    "$(ls "/proc/$demo/fd" | wc -l)" >>"$samples"
done
if kill "$demo" 2>/dev/null; then
  wait "$runner" || true # The demo ends by the signal.
else
  wait "$runner" || { tail -n 5 "$work/stderr.log" >&2; exit 1; }
fi
echo "$(grep -c 'POST /events' "$work/service.log") events, of them $(grep -c ' ready ' "$work/service.log") ready"
python3 - "$samples" <<'PY'
import statistics, sys

rows = [[int(word) for word in line.split()] for line in open(sys.argv[1])]
steady = rows[len(rows) // 2:] # By then the event log is full.
seconds, memory, threads, descriptors = zip(*steady)
print(f"{len(rows)} samples; in the second half {statistics.linear_regression(seconds, memory).slope * 60:+.0f} kB a "
      f"minute (anonymous memory {min(memory):,} to {max(memory):,} kB), {min(threads)} to {max(threads)} threads, "
      f"{min(descriptors)} to {max(descriptors)} descriptors")
PY
