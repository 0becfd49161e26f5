#!/usr/bin/env bash
# Measures a large tree with `tarvik size` against `du -sx` and `gdu -np`, in one hyperfine run
# with warm-ups so every tool reads from a warm page cache; then checks that Tarvik's total is
# exact: allocated bytes of regular files, each (device, inode) once, equal to what find counts.
# The tree (over 200,000 files: hard links, sparse files, symbolic links, some dangling) is
# generated once in $BENCH_TREE and reused from there; without it, in a temporary folder that
# is removed at the end.
# usage: bench/sizer_vs_du.sh [path/to/tarvik]    (RUNS=10 by default)
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh bench
tarvik=$(realpath "${1:-build/release/tarvik}")
[ -x "$tarvik" ] || { scripts/build.sh release >/dev/null; tarvik=$(realpath build/release/tarvik); }
runs=${RUNS:-10}

if [ -n "${BENCH_TREE:-}" ]; then
  root=$BENCH_TREE
  mkdir -p "$root"
else
  root=$(mktemp -d)
  trap 'rm -rf "$root"' EXIT
fi
root=$(realpath "$root")
marker=$root/.sizer-bench-tree-v1

if [ ! -f "$marker" ]; then
  echo "Generating the tree in $root …"
  rm -rf "${root:?}"/d[0-9]*
  start=$SECONDS
  /usr/bin/python3 - "$root" <<'PY'
import os
import random
import sys

root = sys.argv[1]
rnd = random.Random(20240607)
blob = rnd.randbytes(256 * 1024)
folders = 2100          # 100 entries each: 210,000 names
files, dirs = [], []
for i in range(folders):
    d = os.path.join(root, f"d{i // 30:03d}", f"s{i % 30:02d}")
    os.makedirs(d, exist_ok=True)
    dirs.append(d)
    for j in range(100):
        p = os.path.join(d, f"f{j:03d}")
        r = rnd.random()
        if r < 0.03:  # sparse: up to 64 MiB long, one or two 4 KiB blocks of data
            fd = os.open(p, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)
            os.ftruncate(fd, rnd.randrange(1 << 20, 64 << 20))
            os.pwrite(fd, blob[:4096], rnd.randrange(0, 256) * 4096)
            if rnd.random() < 0.5:
                os.pwrite(fd, blob[:4096], 0)
            os.close(fd)
            files.append(p)
        elif r < 0.10 and files:  # another name of an earlier file, maybe in another folder
            os.link(rnd.choice(files), p)
        elif r < 0.13:  # links to files, to folders (never followed), dangling, to the root
            kind = rnd.random()
            target = (rnd.choice(files) if kind < 0.4 and files else
                      rnd.choice(dirs) if kind < 0.7 else
                      root if kind < 0.75 else
                      os.path.join(d, "missing"))
            os.symlink(target, p)
        else:
            s = rnd.random()
            size = (rnd.randrange(0, 512) if s < 0.4 else
                    rnd.randrange(512, 8192) if s < 0.85 else
                    rnd.randrange(8192, 256 * 1024))
            fd = os.open(p, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)
            os.write(fd, blob[:size])
            os.close(fd)
            files.append(p)
PY
  sync -f "$root"
  echo "tree: 210,000 names in 2,100 folders, generated in $((SECONDS - start)) s" > "$marker"
fi
cat "$marker"
printf 'regular file names: %s, distinct files: %s, symbolic links: %s\n' \
  "$(find "$root" -xdev -type f | wc -l)" \
  "$(find "$root" -xdev -type f -printf '%D:%i\n' | sort -u | wc -l)" \
  "$(find "$root" -xdev -type l | wc -l)"

hyperfine --warmup 3 --runs "$runs" \
  -n "tarvik size" "env -u DISPLAY -u WAYLAND_DISPLAY $tarvik size $root >/dev/null" \
  -n "du -sx" "du -sx $root >/dev/null" \
  -n "gdu -np" "gdu -np $root >/dev/null"

# Exactness: Tarvik's allocated bytes against an independent count by find (mawk would print a
# large sum in exponent notation, hence printf).
tarvik_bytes=$(env -u DISPLAY -u WAYLAND_DISPLAY "$tarvik" size --json "$root" |
  /usr/bin/python3 -c 'import json, sys; print(int(json.load(sys.stdin)[0]["allocatedBytes"]))')
find_bytes=$(find "$root" -xdev -type f -printf '%D:%i %b\n' | sort -u |
  awk '{s+=$2} END {printf "%.0f\n", s*512}')
echo "tarvik size --json allocatedBytes: $tarvik_bytes"
echo "find, each (device, inode) once:   $find_bytes"
if [ "$tarvik_bytes" != "$find_bytes" ]; then
  echo "MISMATCH: Tarvik's total differs from the independent count" >&2
  exit 1
fi
echo "equal"
