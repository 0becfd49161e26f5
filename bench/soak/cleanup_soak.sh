#!/usr/bin/env bash
# Soak of the removal path: ROUNDS cleanups of small random trees in a temporary folder
# (bench/soak/cleanup_soak.cpp), each checked item by item; prints the resident memory, open
# descriptors and malloc's counts after the warm-up and every 1,000 rounds, and the verdict.
# usage: bench/soak/cleanup_soak.sh [ROUNDS] [SEED]   (10000 rounds, seed 1)
set -euo pipefail
cd "$(dirname "$0")/../.."
build=build/release
[ -f "$build/CMakeCache.txt" ] || scripts/build.sh release >/dev/null
cmake -S . -B "$build" -DTARVIK_BENCH=ON >/dev/null
cmake --build "$build" --target tarvik_soak_cleanup >/dev/null
"$build/bench/tarvik_soak_cleanup" "${1:-10000}" "${2:-1}"
