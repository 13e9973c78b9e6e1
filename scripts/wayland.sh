#!/usr/bin/env bash
# wayland.sh [TEST...]: plays the demo's session and runs the tests of the views, or those given, under Wayland. The
# compositor is Weston in a window of Xvfb. Its headless backend has no keyboard and no pointer: no window gets the focus
# there.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" != inside ]; then
  tests=("$@")
  [ $# -gt 0 ] || tests=(tst_TopRecommendationView tst_ViewController tst_Teardown tst_ListView tst_CategoryView
    tst_Recommendations tst_QtKPViewController)
  scripts/build.sh check dev zelvano-demo "${tests[@]}"
  runtime=$(mktemp -d)
  trap 'rm -rf "$runtime"' EXIT
  XDG_RUNTIME_DIR=$runtime xvfb-run -a -s '-screen 0 1400x1400x24' "$0" inside "${tests[@]}"
  exit
fi
shift

weston --backend=x11-backend.so --use-pixman --width=1400 --height=1400 --idle-time=0 --no-config \
  --socket=zelvano >"$XDG_RUNTIME_DIR/weston.log" 2>&1 &
weston=$!
trap 'kill "$weston"' EXIT
for _ in $(seq 100); do
  [ ! -S "$XDG_RUNTIME_DIR/zelvano" ] || break
  sleep 0.1
done
unset DISPLAY
# The media backend for the same reason as in scripts/demo.sh.
export WAYLAND_DISPLAY=zelvano QT_QPA_PLATFORM=wayland QT_MEDIA_BACKEND=ffmpeg
[ "$(id -u)" -ne 0 ] || export QTWEBENGINE_DISABLE_SANDBOX=1 # Chromium refuses to run as root with its sandbox on.

failed=()
# run NAME COMMAND...
run() {
  echo "-- $1 (after $SECONDS s)"
  timeout 300 "${@:2}" >"$XDG_RUNTIME_DIR/log" 2>&1 || {
    failed+=("$1")
    grep -E '^(FAIL|QFATAL|   Loc|   Actual|   Expected|zelvano-demo:)' "$XDG_RUNTIME_DIR/log" ||
      tail -n 20 "$XDG_RUNTIME_DIR/log"
  }
}
run "the demo's session" build/dev/demo/zelvano-demo --script demo/session.script \
  --screenshots "$XDG_RUNTIME_DIR" --defaults "$XDG_RUNTIME_DIR/defaults"
for test in "$@"; do
  run "$test" "build/dev/tests/$test"
done
[ ${#failed[@]} -eq 0 ] || { echo "failed under Wayland: ${failed[*]}" >&2; exit 1; }
