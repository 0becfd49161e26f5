#!/usr/bin/env bash
# Parsing and merging a 1,000+ package inventory (the recorded 113-formula capture repeated with
# new names, plus the recorded outdated list) against jq reading the same two files and
# joining them, in one hyperfine run.
# usage: bench/brew_parse_vs_jq.sh [build folder with the benchmarks]   (default build/bench)
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh bench
build=${1:-build/bench}
if [ ! -x "$build/bench/tarvik_bench_brew_parse" ]; then
  cmake -S . -B "$build" -G Ninja -DTARVIK_BENCH=ON -DTARVIK_TESTS=OFF -DCMAKE_BUILD_TYPE=Release >/dev/null
  cmake --build "$build" --target tarvik_bench_brew_parse >/dev/null
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
/usr/bin/python3 - "$work" <<'PY'
import json, sys
src = 'tests/fixtures/homebrew/'
real = json.load(open(src + 'brew_dart/info_v2_installed.json'))
formulae = []
for copy in range(10):
    for f in real['formulae']:
        g = dict(f); g['name'] = f"{f['name']}-{copy}"; formulae.append(g)
json.dump({'formulae': formulae, 'casks': []}, open(sys.argv[1] + '/installed.json', 'w'))
out = json.load(open(src + 'brew_dart/outdated_v2.json'))
entries = []
for copy in range(10):
    for f in out['formulae']:
        g = dict(f); g['name'] = f"{f['name']}-{copy}"; entries.append(g)
json.dump({'formulae': entries, 'casks': []}, open(sys.argv[1] + '/outdated.json', 'w'))
PY
hyperfine --warmup 3 --runs 30 -N \
  "$build/bench/tarvik_bench_brew_parse $work/installed.json $work/outdated.json" \
  "jq -n --slurpfile i $work/installed.json --slurpfile o $work/outdated.json '[\$o[0].formulae[] | {(.name): .current_version}] | add as \$new | [\$i[0].formulae[] | {name, version: (.installed[-1].version), latest: \$new[.name]}] | length'"
