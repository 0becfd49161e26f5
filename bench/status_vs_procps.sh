#!/usr/bin/env bash
# Compares `tarvik status` (host, system, uptime, memory, swap, disk of home) with the procps
# and coreutils commands that print the same facts, in one hyperfine run. Ratios matter, not
# seconds: the machines are noisy.
# usage: bench/status_vs_procps.sh [path/to/tarvik]
set -euo pipefail
cd "$(dirname "$0")/.."
tarvik=${1:-build/release/tarvik}
[ -x "$tarvik" ] || scripts/build.sh release >/dev/null
hyperfine --warmup 5 --runs 50 \
  "env -u DISPLAY -u WAYLAND_DISPLAY $tarvik status >/dev/null" \
  "hostname >/dev/null; uptime >/dev/null; free -h >/dev/null; df -h \$HOME >/dev/null"
