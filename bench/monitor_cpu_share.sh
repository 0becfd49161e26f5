#!/usr/bin/env bash
# CPU share and memory of live monitoring, in one run on the same machine: Tarvik showing tray
# readings (tray only, default interval), `tarvik monitor` at 2 s, against `top -b -d 2`,
# `htop -d 20` and `btop` (2 s, its default). All run side by side for DURATION seconds; each
# process's own user+system time is read from /proc/PID/stat, its resident size from status.
# usage: bench/monitor_cpu_share.sh [path/to/tarvik]    (DURATION=60 by default)
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh bench
tarvik=$(realpath "${1:-build/release/tarvik}")
[ -x "$tarvik" ] || { scripts/build.sh release >/dev/null; tarvik=$(realpath build/release/tarvik); }
duration=${DURATION:-60}
work=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; tmux -L tarvik-bench kill-server 2>/dev/null || true; rm -rf "$work"' EXIT

export LANG=C.UTF-8 HOME=$work XDG_CONFIG_HOME=$work/.config XDG_DATA_HOME=$work/.local/share TERM=xterm-256color
mkdir -p "$XDG_CONFIG_HOME/btop"
echo 'update_ms = 2000' > "$XDG_CONFIG_HOME/btop/btop.conf"
"$tarvik" settings set opensWindowAtLaunch false
"$tarvik" settings set menuBarShowsStats true
"$tarvik" settings set menuBarStats cpu,memory

ticks() { awk '{print $14 + $15}' "/proc/$1/stat"; }
rss() { awk '/VmRSS/ {print $2}' "/proc/$1/status"; }
child_named() { pgrep -n -x "$1"; }

# The tray: a virtual display with an XEmbed tray for Tarvik's icon to dock into.
Xvfb :97 -screen 0 1280x800x24 >/dev/null 2>&1 &
sleep 1
DISPLAY=:97 trayer --edge top --align right --widthtype request --height 28 >/dev/null 2>&1 &
sleep 1
DISPLAY=:97 "$tarvik" >/dev/null 2>&1 &
tray_pid=$!
"$tarvik" monitor --interval 2 >/dev/null &
cli_pid=$!
top -b -d 2 >/dev/null &
top_pid=$!
# htop and btop draw on a terminal of their own size: give them one each in a private tmux.
tmux -L tarvik-bench new-session -d -x 160 -y 48 "htop -d 20"
tmux -L tarvik-bench new-session -d -x 160 -y 48 "btop --utf-force"
sleep 3 # let every program finish starting; start-up is not what is measured
htop_pid=$(child_named htop)
btop_pid=$(child_named btop)

declare -A name=([$tray_pid]="tarvik (tray readings, default interval: every 5 s)"
                 [$cli_pid]="tarvik monitor --interval 2"
                 [$top_pid]="top -b -d 2" [$htop_pid]="htop -d 20" [$btop_pid]="btop (2 s)")
declare -A start
for pid in "${!name[@]}"; do start[$pid]=$(ticks "$pid"); done
sleep "$duration"
hz=$(getconf CLK_TCK)
echo "| program | CPU share over ${duration} s | CPU time | resident memory |"
echo "|---|---|---|---|"
for pid in $tray_pid $cli_pid $top_pid $htop_pid $btop_pid; do
  used=$(( $(ticks "$pid") - ${start[$pid]} ))
  awk -v n="${name[$pid]}" -v t="$used" -v hz="$hz" -v d="$duration" -v r="$(rss "$pid")" \
    'BEGIN { printf "| %s | %.3f %% | %.2f s | %.1f MB |\n", n, 100 * t / hz / d, t / hz, r / 1024 }'
done
