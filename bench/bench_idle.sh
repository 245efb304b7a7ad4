#!/usr/bin/env bash
# CPU of the real program at rest: started under Xvfb as a new user would start it, left alone
# after the splash with the main window shown, then with the listening room and the extraction
# window open as well. Each phase counts the process's CPU ticks (user and kernel, from
# /proc/PID/stat) over SECONDS (60 when not given) and prints them as a share of one core, with
# its ratio to the goal: 0.2 % for the main window, 0.5 % with the two windows open.
#   bench_idle.sh [PROGRAM] [SECONDS]        (under Xvfb of its own unless DISPLAY is set)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
program=${1:-$here/../prog/brasswick}
seconds=${2:-60}
command -v xdotool >/dev/null || { echo "bench_idle needs xdotool" >&2; exit 2; }
[ -n "${DISPLAY:-}" ] || exec xvfb-run -a -s "-screen 0 1280x900x24" "$0" "$program" "$seconds"

home=$(mktemp -d /tmp/bench-idle-XXXXXX)
trap 'kill "$pid" 2>/dev/null || true; rm -rf "$home"' EXIT
HOME=$home XDG_CONFIG_HOME=$home/.config XDG_STATE_HOME=$home/.local/state XDG_RUNTIME_DIR=$home "$program" &
pid=$!
hz=$(getconf CLK_TCK)
ticks() { awk '{ print $14 + $15 }' "/proc/$pid/stat"; }
measure() { # NAME GOAL_PERCENT
  local before after used percent
  before=$(ticks)
  sleep "$seconds"
  after=$(ticks)
  used=$((after - before))
  percent=$(awk -v t="$used" -v hz="$hz" -v s="$seconds" 'BEGIN { printf "%.3f", 100 * t / hz / s }')
  printf '%-40s %4d ticks in %ss: %6s %% of a core, %5.2f times the goal of %s %%; resident %s MB\n' \
    "$1" "$used" "$seconds" "$percent" "$(awk -v p="$percent" -v g="$2" 'BEGIN { print p / g }')" "$2" \
    "$(awk '/VmRSS/ { printf "%.0f", $2 / 1024 }' "/proc/$pid/status")"
}

# The splash stays seven seconds; then the main window.
sleep 10
main=$(xdotool search --sync --onlyvisible --name '^MP3 Brasswick' | head -1)
measure "main window at rest" 0.2

# The extraction window from XOptions -> Digital CD Copy, then the listening room from the
# toolbar (it opens over the main window's menu bar).
eval "$(xdotool getwindowgeometry --shell "$main")"
xdotool mousemove --sync $((X + 35)) $((Y + 8)) click 1
sleep 1
xdotool key Down Down Down Down Return
sleep 3
xdotool windowactivate --sync "$main" 2>/dev/null || xdotool windowraise "$main"
xdotool mousemove --sync $((X + 384)) $((Y + 32)) click 1
sleep 3
# What was on the screen, to check that both windows opened (BENCH_IDLE_SCREENSHOT=FILE.png).
[ -n "${BENCH_IDLE_SCREENSHOT:-}" ] && import -window root "$BENCH_IDLE_SCREENSHOT"
measure "with the listening room and CD copy open" 0.5
