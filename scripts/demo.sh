#!/usr/bin/env bash
# Builds and runs the demo: in a window where there is a display, otherwise a scripted session under Xvfb that leaves
# screenshots and a trace in demo-output/. Arguments go to the demo; see --help.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh demo dev zelvano-demo
demo=build/dev/demo/zelvano-demo

# GStreamer's HTTP source crashes now and then when a player ends (see docs/troubleshooting.md).
export QT_MEDIA_BACKEND=ffmpeg
[ "$(id -u)" -ne 0 ] || export QTWEBENGINE_DISABLE_SANDBOX=1 # Chromium refuses to run as root with its sandbox on.

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  exec "$demo" "$@"
fi

out=demo-output
rm -rf "$out"
mkdir -p "$out"
runtime=$(mktemp -d)
trap 'rm -rf "$runtime"' EXIT
chmod 700 "$runtime"
script=demo/session.script
case " $* " in *" --player kaltura "* | *" --player=kaltura "*) script=demo/kaltura.script ;; esac
status=0
echo "Playing $script under Xvfb, in about a minute; screenshots go to $out/"
# The web and media engines write much to stderr. The demo's own error comes last.
XDG_RUNTIME_DIR=$runtime xvfb-run -a -s '-screen 0 1280x1280x24 +extension GLX' \
  "$demo" --script "$script" --screenshots "$out" --trace "$out/trace.jsonl" \
  --defaults "$out/defaults.json" "$@" 2>"$out/stderr.log" || status=$?
if [ "$status" -ne 0 ]; then
  tail -n 5 "$out/stderr.log" >&2
  exit "$status"
fi
[ ! -f "$out/trace.jsonl" ] || demo/timeline.py "$out/trace.jsonl"
echo
echo "Screenshots: $(ls "$out"/*.png | tr '\n' ' ')"
echo "Trace:       $out/trace.jsonl"
