#!/usr/bin/env bash
# Large files, duplicates and folder sizes: `tarvik dupes`, `tarvik large` and `tarvik size`
# against jdupes, fdupes, rmlint, find, fd, du and gdu, and against the floor — a minimal
# single-threaded getdents64 + statx walk (bench/files/floor_walk.cpp) — on a generated home
# folder whose answers are known.
#
#  1. generates the tree once (bench/files/make_tree.py; SCALE=small: about 100,000 names,
#     SCALE=full: about 1,000,000 smaller files) in $BENCH_TREE, else build/bench-files/tree-100k
#     or tree-1m, with its answers next to it (ROOT.truth.json); reused while the generator's
#     version, the scale and the seed are the same;
#  2. runs every tool as an unprivileged user (setpriv, uid and gid 65534, no groups): the tree
#     belongs to root and everyone may read it, except its unreadable folders, which every tool
#     passes over. HOME is the tree, so Tarvik's own exclusions (the Trash, ~/.local, …) apply
#     to it as to a home folder; --include-library and --include-hidden make Tarvik look
#     everywhere the others look, except inside application bundles and the Trash;
#  3. runs each command once for its answer and peak memory (/usr/bin/time -f %M), which also
#     warms the page cache; checks Tarvik's answers against the truth
#     (bench/files/check_answers.py: PASS/FAIL) and the reference tools' against the truth of
#     their own rule (to show they did the same job);
#  4. times each comparison in one hyperfine run, first on a warm page cache, then (COLD=1)
#     with the page cache dropped before every run;
#  5. prints the mean times and the ratios Tarvik's time / the reference's.
#
# Equivalent jobs: duplicates of at least 1 byte, hidden files included, hard-linked names of
# one file never a pair, links not followed, nothing deleted (jdupes and fdupes treat hard links
# so by default, rmlint with --no-hardlinked; fdupes needs -n to leave empty files out, rmlint
# -F to leave links out and --hidden to look into hidden folders). Large files: at least
# 50,000,000 bytes — `tarvik large --min 50MB` (decimal), `find -size +49999999c`,
# `fdfind --size +50m` (fd's m is 10^6; -H -I: hidden and ignored files too); Tarvik measures a
# file by its blocks, find and fd by its length, so sparse images differ (the truth holds both).
#
# usage: bench/files/files_vs_tools.sh [path/to/tarvik]
#        as root; SCALE=small|full, RUNS=3 and WARMUP=0 on a warm page cache, COLD=1 and
#        COLD_RUNS=2 with it dropped, FDUPES=1 and RMLINT=1 to include those (rmlint, whose
#        runs take several times the others', on a warm page cache only). The 100k tree takes
#        about 6 minutes; the 1m tree about 8: SCALE=full RUNS=1 WARMUP=0 COLD=0 FDUPES=0 RMLINT=0
# Results go to build/bench-files/results-<100k|1m>/; the script exits non-zero if one of
# Tarvik's answers differs from the truth.
set -euo pipefail
cd "$(dirname "$0")/../.."
repo=$PWD
here=$repo/bench/files
scripts/setup.sh bench
if [ "$(id -u)" -ne 0 ]; then
  echo "run as root: it drops the page cache and runs the tools as another user" >&2
  exit 1
fi
scale=${SCALE:-small}
case "$scale" in
  small) label=100k ;;
  full) label=1m ;;
  tiny) label=tiny ;;
  *) echo "SCALE is small or full" >&2; exit 1 ;;
esac
runs=${RUNS:-3}
cold=${COLD:-1}
cold_runs=${COLD_RUNS:-2}
warmup=${WARMUP:-0}  # the answers run has just read every file
with_fdupes=${FDUPES:-1}
with_rmlint=${RMLINT:-1}
res=$repo/build/bench-files/results-$label
mkdir -p "$res"
rm -f "$res"/*.json "$res"/*.txt "$res"/*.md

# --- Tarvik and the floor, built incrementally ----------------------------------------------
. bench/release_tarvik.sh
if [ ! -d build/bench ]; then
  cmake -S . -B build/bench -G Ninja -DTARVIK_BENCH=ON -DTARVIK_TESTS=OFF \
    -DCMAKE_BUILD_TYPE=Release >/dev/null
fi
cmake --build build/bench --target tarvik_bench_floor_walk >/dev/null
floor=$repo/build/bench/bench/tarvik_bench_floor_walk

# --- The tree and its answers ---------------------------------------------------------------
root=${BENCH_TREE:-$repo/build/bench-files/tree-$label}
mkdir -p "$(dirname "$root")"
root=$(realpath -m "$root")
truth=$root.truth.json
version=$(sed -n 's/^VERSION = //p' "$here/make_tree.py")
if ! python3 - "$truth" "$scale" "$version" <<'PY'
import json, sys
try:
    t = json.load(open(sys.argv[1]))
except (OSError, ValueError):
    sys.exit(1)
sys.exit(0 if t["scale"] == sys.argv[2] and t["version"] == int(sys.argv[3]) else 1)
PY
then
  rm -f "$truth"
  python3 "$here/make_tree.py" "$root" --scale "$scale"
fi
as_user=(setpriv --reuid=65534 --regid=65534 --clear-groups)
if ! "${as_user[@]}" test -r "$root" -a -x "$root"; then
  echo "uid 65534 cannot enter $root: every folder above it must be open to everyone" >&2
  exit 1
fi
unset DISPLAY WAYLAND_DISPLAY XDG_CONFIG_HOME XDG_DATA_HOME XDG_CACHE_HOME XDG_STATE_HOME
export HOME=$root

q() { printf '%q ' "$@"; }  # one command line for hyperfine -N
u="$(q "${as_user[@]}")"
r=$(q "$root")
tarvik_dupes="$u$(q "$tarvik") dupes $r --min 1 --include-hidden --include-library --json"
tarvik_large="$u$(q "$tarvik") large $r --min 50MB --include-hidden --include-library --json"
tarvik_size="$u$(q "$tarvik") size $r"
jdupes_cmd="${u}jdupes -r -q $r"
fdupes_cmd="${u}fdupes -r -q -n $r"
rmlint_cmd="${u}rmlint -T df --hidden --no-hardlinked -F -o json:/dev/null $r"
find_cmd="${u}find $r -type f -size +49999999c"
fd_cmd="${u}fdfind --size +50m -t f -H -I . $r"
du_cmd="${u}du -sx $r"
gdu_cmd="${u}gdu -np $r"
floor_cmd="$u$(q "$floor") $r 50000000"
{
  echo "tarvik: $("$tarvik" --version 2>&1 | sed -n 1p)"
  jdupes -v | sed -n 1p
  fdupes -v
  rmlint --version 2>&1 | sed -n 1p
  fdfind --version
  find --version | sed -n 1p
  du --version | sed -n 1p
  gdu --version | sed -n 1p
  hyperfine --version
  echo "tree: $root ($scale), $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg)"
} | tee "$res/versions.txt"

# --- Answers and peak memory; this also warms the page cache ---------------------------------
: >"$res/peak-rss.tsv"
answer() {  # answer NAME OUTPUT COMMAND…: runs it once, keeps stdout and the peak RSS
  local name=$1 output=$2 status=0
  shift 2
  /usr/bin/time -f %M -o "$res/time.txt" "${as_user[@]}" "$@" >"$output" \
    2>"$res/stderr.txt" || status=$?
  printf '%s\t%s\t%s\t%s\n' "$name" "$(tail -1 "$res/time.txt")" "$status" \
    "$(grep -c . "$res/stderr.txt" || true)" >>"$res/peak-rss.tsv"
}
answer "tarvik dupes" "$res/tarvik-dupes.json" \
  "$tarvik" dupes "$root" --min 1 --include-hidden --include-library --json
answer "jdupes -r" "$res/jdupes.txt" jdupes -r -q -0 "$root"
[ "$with_fdupes" = 1 ] && answer "fdupes -r -n" "$res/fdupes.txt" fdupes -r -q -n "$root"
[ "$with_rmlint" = 1 ] && answer "rmlint -T df" "$res/rmlint.json" \
  rmlint -T df --hidden --no-hardlinked -F -o json:stdout "$root"
answer "tarvik large" "$res/tarvik-large.json" \
  "$tarvik" large "$root" --min 50MB --include-hidden --include-library --json
answer "tarvik large --older-than 365" "$res/tarvik-large-old.json" \
  "$tarvik" large "$root" --min 50MB --include-hidden --include-library --older-than 365 --json
answer "find -size" "$res/find.txt" find "$root" -type f -size +49999999c -print0
answer "fdfind --size" "$res/fd.txt" fdfind --size +50m -t f -H -I -0 . "$root"
answer "tarvik size --json" "$res/tarvik-size.json" "$tarvik" size --json "$root"
answer "du -sx -B1" "$res/du.txt" du -sx -B1 "$root"
answer "gdu -np" "$res/gdu.txt" gdu -np "$root"
answer "floor walk" "$res/floor.txt" "$floor" "$root" 50000000
rm -f "$res/time.txt" "$res/stderr.txt"

# --- Wall time ------------------------------------------------------------------------------
# hyperfine -N: no shell between hyperfine and the tool; -i: du, find and the duplicate finders
# exit non-zero for the unreadable folders (each command's answer is checked below instead).
dupes_set=(-n "tarvik dupes" "$tarvik_dupes" -n "jdupes -r" "$jdupes_cmd")
[ "$with_fdupes" = 1 ] && dupes_set+=(-n "fdupes -r -n" "$fdupes_cmd")
[ "$with_rmlint" = 1 ] && dupes_set+=(-n "rmlint -T df" "$rmlint_cmd")
large_set=(-n "tarvik large" "$tarvik_large" -n "find -size" "$find_cmd"
           -n "fdfind --size" "$fd_cmd" -n "floor walk" "$floor_cmd")
size_set=(-n "tarvik size" "$tarvik_size" -n "du -sx" "$du_cmd" -n "gdu -np" "$gdu_cmd"
          -n "floor walk" "$floor_cmd")
pass() {  # pass warm|cold
  local kind=$1 opts
  for job in dupes large size; do
    if [ "$kind" = warm ]; then
      opts=(--warmup "$warmup" --runs "$runs")
      # the walks take a fraction of a second: one more warm-up costs little
      [ "$job" = dupes ] || opts=(--warmup "$((warmup + 1))" --runs "$runs")
    else
      opts=(--runs "$cold_runs" --prepare "sh -c 'sync; echo 3 > /proc/sys/vm/drop_caches'")
    fi
    local -n cmds=${job}_set
    if [ "$kind" = cold ] && [ "$job" = dupes ] && [ "$with_rmlint" = 1 ]; then
      cmds=("${cmds[@]:0:${#cmds[@]}-2}")  # rmlint, the last: on a warm page cache only
    fi
    echo "== $job, $kind page cache"
    hyperfine -N -i --style basic "${opts[@]}" --export-json "$res/$kind-$job.json" "${cmds[@]}"
  done
}
pass warm
[ "$cold" = 1 ] && pass cold

status=0
python3 "$here/check_answers.py" "$truth" "$res" --summary "$res/check.json" || status=1

# --- Summary --------------------------------------------------------------------------------
python3 - "$res" "$truth" "$cold" <<'PY' | tee "$res/summary.md"
import json, math, os, sys
res, truth, cold = sys.argv[1], json.load(open(sys.argv[2])), sys.argv[3] == "1"
c = truth["counts"]
print(f"\nTree ({truth['scale']}): {c['names']:,} file names of {c['inodes']:,} files "
      f"({c['hard_linked_inodes']:,} with several names), {c['symlinks']:,} symbolic links, "
      f"{c['folders']:,} folders ({c['unreadable_folders']} unreadable), "
      f"{truth['allocated_bytes'] / 1e9:.2f} GB allocated; "
      f"{len(truth['dupes']['tarvik']['groups']):,} duplicate groups "
      f"({truth['dupes']['tarvik']['wasted'] / 1e6:,.1f} MB wasted), "
      f"{len(truth['large']['allocated'])} large files by blocks, "
      f"{len(truth['large']['logical'])} by length")

def fmt(s, unit=None):  # in the unit of `unit` (the mean) when given
    return f"{s * 1000:.0f} ms" if (unit or s) < 10 else f"{s:.2f} s"

for kind in ("warm", "cold") if cold else ("warm",):
    print(f"\n{kind} page cache | command | mean ± σ | Tarvik / this |\n|---|---|---|---|")
    for job in ("dupes", "large", "size"):
        path = f"{res}/{kind}-{job}.json"
        if not os.path.exists(path):
            continue
        rows = json.load(open(path))["results"]
        t = rows[0]
        for x in rows:
            sd = lambda r: r["stddev"] or 0.0  # noqa: E731 (None after a single run)
            ratio = t["mean"] / x["mean"]
            err = ratio * math.sqrt((sd(t) / t["mean"]) ** 2 + (sd(x) / x["mean"]) ** 2)
            cell = "" if x is t else f"{ratio:.2f}" + (f" ± {err:.2f}" if err else "")
            spread = f" ± {fmt(sd(x), x['mean'])}" if x["stddev"] is not None else " (1 run)"
            print(f"| {job} | {x['command']} | {fmt(x['mean'])}{spread} | {cell} |")
print("\n| command (answers run) | peak RSS | exit status | stderr lines |\n|---|---|---|---|")
for line in open(f"{res}/peak-rss.tsv"):
    name, kb, st, errs = line.rstrip("\n").split("\t")
    print(f"| {name} | {int(kb) / 1024:.1f} MiB | {st} | {errs} |")
PY
exit "$status"
