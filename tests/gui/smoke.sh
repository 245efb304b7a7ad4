#!/usr/bin/env bash
# Starts the real program on a virtual X display, as a user would, and photographs the screen:
# the splash at two seconds, the main window at nine. Pictures are kept in the build folder.
set -euo pipefail

# On the virtual display: start the program, photograph it at two and at nine seconds.
if [ "${1:-}" = "--on-display" ]; then
  program=$2 out=$3 config=$4
  XDG_CONFIG_HOME="$config" "$program" &
  pid=$!
  sleep 2
  xwininfo -root -tree > "$out/windows-2s.txt"
  import -window root "$out/splash.png"
  sleep 7
  xwininfo -root -tree > "$out/windows-9s.txt"
  import -window root "$out/main.png"
  kill -0 "$pid"            # still running
  kill "$pid"
  wait "$pid" 2>/dev/null || true
  exit 0
fi

program=${1:?usage: smoke.sh PROGRAM OUTPUT_DIR}
out=${2:?usage: smoke.sh PROGRAM OUTPUT_DIR}
mkdir -p "$out"
rm -f "$out"/splash.png "$out"/main.png "$out"/windows-*.txt

config=$(mktemp -d)
trap 'rm -rf "$config"' EXIT

xvfb-run -a -s "-screen 0 1280x800x24" "$0" --on-display "$program" "$out" "$config"

fail() { echo "smoke test: $*" >&2; exit 1; }
splash="MP3 Brasswick 1.3"
main="MP3 Brasswick 1.3- Studio Edition"
grep -q "\"$splash\"" "$out/windows-2s.txt" || fail "no splash after two seconds"
grep -q "\"$main\"" "$out/windows-2s.txt" && fail "the main window came before the splash's seven seconds"
grep -q "\"$main\"" "$out/windows-9s.txt" || fail "no main window after nine seconds"
grep -q "\"$splash\"" "$out/windows-9s.txt" && fail "the splash is still there after nine seconds"
# Each picture must show something: a screen of one colour means nothing was drawn.
for p in splash main; do
  colours=$(identify -format '%k' "$out/$p.png")
  [ "$colours" -gt 20 ] || fail "$p.png has only $colours colours"
done
cmp -s "$out/splash.png" "$out/main.png" && fail "the screen did not change between splash and main window"
echo "smoke test: splash and main window photographed in $out"
