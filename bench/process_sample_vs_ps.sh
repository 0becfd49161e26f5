#!/usr/bin/env bash
# One process sample with 1,000 extra processes running, against `ps -eo pid,pcpu,rss,comm`
# and `top -b -n 1`, in one hyperfine run. Ratios matter, not seconds: the machines are noisy.
# usage: bench/process_sample_vs_ps.sh [processes]
set -euo pipefail
cd "$(dirname "$0")/.."
count=${1:-1000}
if [ ! -f build/bench/CMakeCache.txt ]; then
  cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DTARVIK_BENCH=ON >/dev/null
fi
cmake --build build/bench --target tarvik_bench_process_sample >/dev/null
sample=build/bench/bench/tarvik_bench_process_sample

pids=()
cleanup() { [ ${#pids[@]} -eq 0 ] || kill "${pids[@]}" 2>/dev/null || true; }
trap cleanup EXIT
for _ in $(seq "$count"); do
  sleep 600 &
  pids+=($!)
done
echo "processes now: $(ls -d /proc/[0-9]* | wc -l)"
"$sample" --repeat 200

hyperfine --warmup 5 --runs 100 -N \
  "$sample" \
  "ps -eo pid,pcpu,rss,comm" \
  "top -b -n 1"
