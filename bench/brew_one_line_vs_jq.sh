#!/usr/bin/env bash
# brew's JSON arrives as one line: `tarvik brew list --json` against a stand-in brew whose
# installed list is 45 MB on a single line (the recorded 113-formula capture repeated with new
# names), against jq reading the same file, in one hyperfine run. Reading the answer must cost
# time in proportion to its size: before the line reader looked at each byte once, this took 17 s.
# usage: bench/brew_one_line_vs_jq.sh [path/to/tarvik]   (RUNS=10 by default)
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh bench
. bench/release_tarvik.sh
runs=${RUNS:-10}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/prefix/bin" "$work/home"
/usr/bin/python3 - "$work" <<'PY'
import json, sys
src = 'tests/fixtures/homebrew/'
real = json.load(open(src + 'brew_dart/info_v2_installed.json'))
formulae, copy = [], 0
text = ''
while len(text) < 45_000_000:
    for f in real['formulae']:
        g = dict(f); g['name'] = f"{f['name']}-{copy}"; formulae.append(g)
    copy += 1
    if copy % 20 == 0:
        text = json.dumps({'formulae': formulae, 'casks': []}, separators=(',', ':'))
text = json.dumps({'formulae': formulae, 'casks': []}, separators=(',', ':'))
open(sys.argv[1] + '/installed.json', 'w').write(text + '\n')
print(f"{len(text):,} bytes on one line, {len(formulae):,} formulae", file=sys.stderr)
PY
cat > "$work/prefix/bin/brew" <<SH
#!/bin/bash
case "\$1" in
  --version) echo 'Homebrew 4.4.1' ;;
  info) cat '$work/installed.json' ;;
  outdated) echo '{"formulae":[],"casks":[]}' ;;
  services) echo '[]' ;;
  *) exit 1 ;;
esac
SH
chmod +x "$work/prefix/bin/brew"
hyperfine --warmup 1 --runs "$runs" -N \
  "env HOME=$work/home PATH=$work/prefix/bin:/usr/bin:/bin $tarvik brew list --json" \
  "jq '.formulae | length' $work/installed.json"
