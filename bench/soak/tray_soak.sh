#!/usr/bin/env bash
# Soak of the tray: Tarvik in the tray of a private X server (Xvfb, trayer as the tray host),
# its readings (CPU, memory, network, agent) on the tray icon and its panel open, which is what
# makes the sampler run at the monitorInterval of 1 s (the icon alone samples every 5 s at the
# most). The agents are signed in with made-up credentials and their services are a local
# stand-in; every AGENT_EVERY seconds (default 30) `tarvik settings` takes the agent reading
# off the icon and puts it back, and the tray reads all four agents' usage anew on its return
# (its own refresh is every 5 minutes).
#
# Every 10 s the process's resident size, open descriptors and CPU time go to samples.csv. With
# D the duration, the run passes when, after a warm-up of D/12 (10 minutes of 2 hours):
#   - the resident size grew by less than 2 MiB (last sample against the first after warm-up),
#   - the open descriptors did not grow (the last quarter's most is at most the most of the
#     base window, D/12 to D/3: 10 to 40 minutes of 2 hours),
#   - the CPU share of the last quarter (the last 30 minutes) is within ±25 % (or ±0.05
#     percentage points, the larger) of the base window's.
# summary.txt says so, with the figures; tarvik.log has Tarvik's own output.
#
# usage: bench/soak/tray_soak.sh [DURATION] [OUT_DIR] [path/to/tarvik]
#   DURATION  seconds, or with a unit: 300, 5m, 2h (default 2h)
#   OUT_DIR   where samples.csv, summary.txt, requests.txt and tarvik.log go
#             (default /tmp/tarvik-soak-tray)
set -euo pipefail
cd "$(dirname "$0")/../.."
duration=${1:-2h}
case $duration in
  *h) duration=$((${duration%h} * 3600)) ;;
  *m) duration=$((${duration%m} * 60)) ;;
  *s) duration=${duration%s} ;;
esac
out=$(realpath -m "${2:-/tmp/tarvik-soak-tray}")
if [ -n "${3:-}" ]; then
  tarvik=$(realpath "$3")
else
  [ -x build/release/tarvik ] || scripts/build.sh release >/dev/null
  tarvik=$PWD/build/release/tarvik
fi
agent_every=${AGENT_EVERY:-30}
readings=cpu,memory,download,upload # and agent
mkdir -p "$out"
rm -f "$out/samples.csv" "$out/summary.txt" "$out/requests.txt"

work=$(mktemp -d)
trap 'kill $(jobs -p) $(cat "$work/bus.pid" 2>/dev/null) 2>/dev/null || true; wait 2>/dev/null;
      rm -rf "$work"' EXIT
source bench/soak/soak_home.sh "$work" "$((duration + 120))"

"$tarvik" settings set opensWindowAtLaunch false >/dev/null
"$tarvik" settings set menuBarShowsStats true >/dev/null
"$tarvik" settings set menuBarStats "$readings,agent" >/dev/null
"$tarvik" settings set monitorInterval 1 >/dev/null

display=:$((100 + RANDOM % 100))
Xvfb "$display" -screen 0 1280x800x24 -nolisten tcp >/dev/null 2>&1 &
export DISPLAY=$display
for _ in $(seq 50); do xdotool getmouselocation >/dev/null 2>&1 && break; sleep 0.1; done
trayer --edge top --align right --widthtype request --height 28 >/dev/null 2>&1 &
sleep 1
"$tarvik" >"$out/tarvik.log" 2>&1 &
pid=$!

# The icon is the window trayer embeds; the panel opens under it on a click.
icon=
for _ in $(seq 100); do
  icon=$(xdotool search --onlyvisible --classname '^tarvik$' 2>/dev/null | head -n1) || true
  [ -n "$icon" ] && break
  sleep 0.1
done
[ -n "$icon" ] || { echo "Tarvik's tray icon did not appear" >&2; exit 1; }
panel_open() { xdotool search --onlyvisible --name '^Tarvik$' >/dev/null 2>&1; }
open_panel() {
  panel_open && return
  xdotool mousemove --window "$icon" 8 8 click 1
  for _ in $(seq 50); do panel_open && return; sleep 0.1; done
  echo "the tray panel did not open" >&2
  exit 1
}
reread_agents() {
  "$tarvik" settings set menuBarStats "$readings" >/dev/null
  sleep 1
  "$tarvik" settings set menuBarStats "$readings,agent" >/dev/null
}

open_panel
sleep 3 # start-up is not what is measured
hz=$(getconf CLK_TCK)
echo "seconds,rss_kib,fds,cpu_seconds,threads" >"$out/samples.csv"
sample() {
  local rss fds cpu threads
  rss=$(awk '/^VmRSS/ {print $2}' "/proc/$pid/status")
  threads=$(awk '/^Threads/ {print $2}' "/proc/$pid/status")
  fds=$(ls "/proc/$pid/fd" | wc -l)
  cpu=$(awk -v hz="$hz" '{printf "%.2f", ($14 + $15) / hz}' "/proc/$pid/stat")
  echo "$1,$rss,$fds,$cpu,$threads" >>"$out/samples.csv"
}
start=$(date +%s)
next_agents=$agent_every
early=
for ((t = 0; t <= duration; t += 10)); do
  while [ "$(($(date +%s) - start))" -lt "$t" ]; do
    if [ "$agent_every" -gt 0 ] && [ "$(($(date +%s) - start))" -ge "$next_agents" ]; then
      open_panel
      reread_agents
      next_agents=$((next_agents + agent_every))
    fi
    sleep 0.5
  done
  if ! kill -0 "$pid" 2>/dev/null; then early=$t; break; fi
  sample "$t"
done
cp "$work/requests" "$out/requests.txt" 2>/dev/null || true

python3 - "$out/samples.csv" "$duration" "${early:-}" >"$out/summary.txt" <<'PY'
import csv, statistics, sys
rows = [{k: float(v) for k, v in r.items()} for r in csv.DictReader(open(sys.argv[1]))]
duration, early = float(sys.argv[2]), sys.argv[3]
warm, base_end, last_start = duration / 12, duration / 3, duration * 3 / 4
def window(a, b): return [r for r in rows if a <= r["seconds"] <= b]
def share(w): return 100 * (w[-1]["cpu_seconds"] - w[0]["cpu_seconds"]) / (w[-1]["seconds"] - w[0]["seconds"])
after, base, last = window(warm, duration), window(warm, base_end), window(last_start, duration)
checks = []
if early:
    checks.append((False, f"tarvik exited after {early} s"))
if len(base) >= 2 and len(last) >= 2:
    grown = after[-1]["rss_kib"] - after[0]["rss_kib"]
    checks.append((grown < 2048, f"resident size {after[0]['rss_kib'] / 1024:.1f} MiB at {after[0]['seconds']:.0f} s, "
                   f"{after[-1]['rss_kib'] / 1024:.1f} MiB at the end: {grown:+.0f} KiB (limit: under +2048 KiB); "
                   f"highest after warm-up {max(r['rss_kib'] for r in after) / 1024:.1f} MiB"))
    fb, fl = max(r["fds"] for r in base), max(r["fds"] for r in last)
    checks.append((fl <= fb, f"open descriptors: base window {min(r['fds'] for r in base):.0f}–{fb:.0f}, "
                   f"last quarter {min(r['fds'] for r in last):.0f}–{fl:.0f}"))
    sb, sl = share(base), share(last)
    margin = max(0.25 * sb, 0.05)
    checks.append((abs(sl - sb) <= margin, f"CPU share: {sb:.3f} % over {base[0]['seconds']:.0f}–{base[-1]['seconds']:.0f} s, "
                   f"{sl:.3f} % over {last[0]['seconds']:.0f}–{last[-1]['seconds']:.0f} s (margin ±{margin:.3f} points); "
                   f"whole run {share(rows):.3f} %"))
    checks.append((True, f"threads: {statistics.median(r['threads'] for r in base):.0f} (base window median), "
                   f"{statistics.median(r['threads'] for r in last):.0f} (last quarter median)"))
else:
    checks.append((False, "too few samples"))
print(f"tray soak over {duration:.0f} s, {len(rows)} samples")
for ok, text in checks:
    print(("ok    " if ok else "FAIL  ") + text)
print("PASS" if all(ok for ok, _ in checks) else "FAIL")
PY
{ echo "requests served by the stand-in:"; cat "$out/requests.txt" 2>/dev/null; } >>"$out/summary.txt"
cat "$out/summary.txt"
grep -qx PASS "$out/summary.txt"
