#!/usr/bin/env bash
# Soak of the window: opens the window, shows every screen and closes the window again, ROUNDS
# times, offscreen (bench/soak/window_soak.cpp), in a temporary home whose agents are signed in
# with made-up credentials and answered by a local stand-in. Prints the resident memory and open
# descriptors at round 10 and every 100 rounds, and whether they stayed within their bounds.
# usage: bench/soak/window_soak.sh [ROUNDS [SECTION...]]   (1000 rounds of every section)
set -euo pipefail
cd "$(dirname "$0")/../.."
rounds=${1:-1000}
build=build/release
[ -f "$build/CMakeCache.txt" ] || scripts/build.sh release >/dev/null
cmake -S . -B "$build" -DTARVIK_BENCH=ON >/dev/null
cmake --build "$build" --target tarvik_soak_window >/dev/null

work=$(mktemp -d)
trap 'kill $(jobs -p) $(cat "$work/bus.pid" 2>/dev/null) 2>/dev/null || true; wait 2>/dev/null;
      rm -rf "$work"' EXIT
# The stand-in lives as long as the longest run could take (a second a round is far more).
source bench/soak/soak_home.sh "$work" "$((rounds + 600))"
status=0
# The offscreen platform cannot raise a window, and says so each time the window opens.
"$build/bench/tarvik_soak_window" "$rounds" "${@:2}" 2> >(grep -v 'does not support raise()' >&2) ||
  status=$?
sleep 10 # the stand-in writes its counts every 10 s
echo "requests served by the stand-in:"
cat "$work/requests"
exit "$status"
