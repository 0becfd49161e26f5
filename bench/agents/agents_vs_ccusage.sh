#!/usr/bin/env bash
# Agent spend from local logs: `tarvik agents cost --period 30d --json` against ccusage, the
# usual command-line tool for the same figures, on a generated month of Claude Code and Codex
# logs (build/bench-agents/home, over 1.5 GB).
#
#  1. generates the corpus (and a variant with the same answers in files 4× shorter) unless
#     today's is there: the 30-day window moves with the calendar;
#  2. installs ccusage 20.0.24 (a static native binary, shipped as a per-platform optional
#     package) and ccusage 18 (JavaScript on Node) with npm into build/bench-agents/npm;
#  3. times all three in one hyperfine run with warm-ups on a warm page cache, then measures
#     each one's peak memory with /usr/bin/time -v;
#  4. recomputes Tarvik's days from the logs with Python's json module (must be equal, in the
#     machine's zone and in one half an hour off UTC), and accounts for every difference to
#     ccusage's daily totals; then runs small logs that isolate the rules where they differ.
#
# usage: bench/agents/agents_vs_ccusage.sh [path/to/tarvik]   (RUNS=5 by default)
# Results go to build/bench-agents/results/; the script exits non-zero if Tarvik's figures are
# not equal to the recomputation or a difference to ccusage is left unexplained.
set -euo pipefail
cd "$(dirname "$0")/../.."
repo=$PWD
here=$repo/bench/agents
out=$repo/build/bench-agents
res=$out/results
runs=${RUNS:-5}
ccusage20_version=${CCUSAGE20:-20.0.24}
ccusage18_version=${CCUSAGE18:-18}
claude_sessions=1550
codex_sessions=680
seed=20261122
mkdir -p "$res"

# --- Tarvik, built incrementally so the figures are of the current code ----------------------
. bench/release_tarvik.sh

# --- The corpus: deterministic for the seed and the day --------------------------------------
corpus() {  # corpus DIR FILLER_SCALE
  local dir=$1 scale=$2
  if ! python3 - "$dir/corpus.json" "$scale" "$claude_sessions" "$codex_sessions" "$seed" <<'PY'
import datetime, json, sys
path, scale, claude, codex, seed = sys.argv[1:]
try:
    c = json.load(open(path))
except OSError:
    sys.exit(1)
same = (c["day"] == datetime.date.today().isoformat() and c["filler_scale"] == float(scale)
        and c["claude_files"] == int(claude) and c["codex_files"] == int(codex)
        and c["seed"] == int(seed))
sys.exit(0 if same else 1)
PY
  then
    echo "Generating $dir (filler scale $scale) …"
    python3 "$here/make_corpus.py" "$dir" --seed "$seed" --filler-scale "$scale" \
      --claude-sessions "$claude_sessions" --codex-sessions "$codex_sessions" >/dev/null
  fi
}
corpus "$out/home" 1
corpus "$out/home-short" 0.08

# --- ccusage from npm, each version in a folder of its own ----------------------------------
npm_install() {  # npm_install DIR PACKAGE@VERSION
  local dir=$1 package=$2
  if [ ! -f "$dir/node_modules/ccusage/package.json" ] ||
     ! grep -q "\"version\": \"${package#ccusage@}" "$dir/node_modules/ccusage/package.json"; then
    rm -rf "$dir" && mkdir -p "$dir"
    echo '{"private": true}' > "$dir/package.json"
    npm install --prefix "$dir" --no-audit --no-fund --loglevel=error "$package" >/dev/null
  fi
}
npm_install "$out/npm/ccusage20" "ccusage@$ccusage20_version"
npm_install "$out/npm/ccusage18" "ccusage@$ccusage18_version"
case "$(uname -m)" in
  x86_64) arch=x64 ;;
  aarch64) arch=arm64 ;;
  *) echo "no native ccusage package for $(uname -m)" >&2; exit 1 ;;
esac
# 20.x's `ccusage` is a small Node launcher that runs the binary of @ccusage/ccusage-linux-*;
# the binary is timed directly. npm unpacks it without the execute bit, which the launcher
# would set on its first run.
cc20=$out/npm/ccusage20/node_modules/@ccusage/ccusage-linux-$arch/bin/ccusage
chmod +x "$cc20"
cc18=$out/npm/ccusage18/node_modules/ccusage/dist/index.js
{
  echo "tarvik: $("$tarvik" --version)"
  echo "ccusage native: $("$cc20" --version)"
  echo "ccusage js: $(node "$cc18" --version) on node $(node --version)"
  echo "$(hyperfine --version)"
} | tee "$res/versions.txt"

# Every tool reads the same logs: Tarvik and ccusage look at these three variables.
use_home() {
  export HOME=$1 CLAUDE_CONFIG_DIR=$1/.claude CODEX_HOME=$1/.codex
}
warm() {  # keep the timings about parsing, not the disk
  find "$1/.claude" "$1/.codex" -name '*.jsonl' -exec cat {} + >/dev/null
}
use_home "$out/home"
warm "$HOME"

# --- Wall time ------------------------------------------------------------------------------
hyperfine --warmup 1 --runs "$runs" --style basic \
  --export-json "$res/hyperfine.json" --export-markdown "$res/hyperfine.md" \
  -n "tarvik agents cost --period 30d --json" \
  "$tarvik agents cost --period 30d --json" \
  -n "ccusage $ccusage20_version (native): claude daily + codex daily" \
  "$cc20 claude daily --json --offline && $cc20 codex daily --json --offline" \
  -n "ccusage $(node "$cc18" --version) (Node): daily (Claude Code only)" \
  "node $cc18 daily --json --offline"

# --- Peak memory, and the outputs the checks below read ------------------------------------
peak() {  # peak NAME OUTPUT COMMAND…: runs it once, keeps stdout, appends "NAME<TAB>KB"
  local name=$1 output=$2
  shift 2
  /usr/bin/time -v "$@" >"$output" 2>"$res/time.txt"
  printf '%s\t%s\n' "$name" "$(awk -F': ' '/Maximum resident/ {print $2}' "$res/time.txt")" \
    >>"$res/peak-rss.tsv"
}
: >"$res/peak-rss.tsv"
peak "tarvik agents cost (corpus)" "$res/tarvik.json" "$tarvik" agents cost --period 30d --json
peak "ccusage native: claude daily" "$res/c20-claude.json" "$cc20" claude daily --json --offline
peak "ccusage native: codex daily" "$res/c20-codex.json" "$cc20" codex daily --json --offline
peak "ccusage js: daily" "$res/c18.json" node "$cc18" daily --json --offline
use_home "$out/home-short"
warm "$HOME"
peak "tarvik agents cost (files 4x shorter)" "$res/tarvik-short.json" \
  "$tarvik" agents cost --period 30d --json
use_home "$out/home"
rm -f "$res/time.txt"

# --- Is Tarvik right? -----------------------------------------------------------------------
status=0
zone=${TZ:-$(cat /etc/timezone 2>/dev/null || readlink /etc/localtime | sed 's|.*zoneinfo/||')}
python3 "$here/spend_check.py" --home "$HOME" --tz "$zone" --tarvik "$res/tarvik.json" \
  --out "$res/check.json" || status=1
# Days are local: the same logs again in a zone half an hour off the hour.
TZ=America/St_Johns "$tarvik" agents cost --period 30d --json >"$res/tarvik-st-johns.json"
python3 "$here/spend_check.py" --home "$HOME" --tz America/St_Johns \
  --tarvik "$res/tarvik-st-johns.json" --out "$res/check-st-johns.json" || status=1
python3 - "$res/tarvik.json" "$res/tarvik-short.json" <<'PY' || status=1
import json, sys
a, b = (json.load(open(p)) for p in sys.argv[1:])
same = a["days"] == b["days"] and a["models"] == b["models"]
print("Same figures from the files 4x shorter:", "yes" if same else "NO")
sys.exit(0 if same else 1)
PY

# --- And ccusage? ---------------------------------------------------------------------------
python3 "$here/compare_ccusage.py" "$res/check.json" "$res/c20-claude.json" \
  "$res/c20-codex.json" "$res/c18.json" --out "$res/ccusage.json" || status=1
echo "Rules isolated on small logs (tokens of the one day each case is on):"
python3 "$here/rule_probes.py" "$out/probes" "$tarvik" "$cc20" "$cc18" | tee "$res/probes.md"

# --- Summary --------------------------------------------------------------------------------
python3 - "$res" "$out/home/corpus.json" "$out/home-short/corpus.json" <<'PY'
import json, math, sys
res, main, short = sys.argv[1:]
main, short = json.load(open(main)), json.load(open(short))
check = json.load(open(f"{res}/check.json"))
print(f"\nCorpus: {main['files']:,} files ({main['claude_files']:,} Claude Code sessions, "
      f"{main['subagent_files']:,} subagent logs, {main['codex_files']:,} Codex sessions; "
      f"{main['old_files']} older than the window), {main['bytes']:,} bytes, "
      f"{main['lines']:,} lines; variant {short['bytes']:,} bytes "
      f"({main['bytes'] / short['bytes']:.2f}x shorter)")
print(f"Tarvik opened {check['files']['claude'][0] + check['files']['codex'][0]:,} files and "
      f"passed over {check['files']['claude'][1] + check['files']['codex'][1]} by time stamp")
h = json.load(open(f"{res}/hyperfine.json"))["results"]
t = h[0]
print("\n| command | mean ± σ |\n|---|---|")
for r in h:
    print(f"| `{r['command']}` | {r['mean']:.3f} s ± {r['stddev']:.3f} |")
for r in h[1:]:
    ratio = r["mean"] / t["mean"]
    err = ratio * math.sqrt((r["stddev"] / r["mean"]) ** 2 + (t["stddev"] / t["mean"]) ** 2)
    print(f"{r['command']}: {ratio:.2f} ± {err:.2f} × Tarvik's time")
print("\n| program | peak RSS |\n|---|---|")
for line in open(f"{res}/peak-rss.tsv"):
    name, kb = line.rstrip("\n").split("\t")
    print(f"| {name} | {int(kb) / 1024:.1f} MiB |")
PY
exit "$status"
