#!/usr/bin/env bash
# Builds the fuzz targets (clang, libFuzzer, ASan + UBSan) and runs them.
#   scripts/fuzz.sh TARGET [SECONDS]   one target, 600 s unless told
#   scripts/fuzz.sh --all SECONDS      every target, SECONDS split evenly (10 s each at least)
#   scripts/fuzz.sh --list             the targets
# A target starts from its seeds (fixtures in tests/fixtures) and the inputs saved in
# tests/fuzz/TARGET, and keeps what it learns in build/fuzz/corpus/TARGET. An input that fails is
# written to build/fuzz/findings/TARGET/; saved into tests/fuzz/TARGET/ it becomes a test.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh fuzz
dir=build/fuzz
if [ ! -f "$dir/CMakeCache.txt" ]; then
  # -O1 with line tables only, as fuzzing is usually built: quick to compile, fast enough to run,
  # and failures still name their lines.
  CC=clang CXX=clang++ cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=None \
    -DCMAKE_CXX_FLAGS="-O1 -gline-tables-only" -DTARVIK_FUZZ=ON -DTARVIK_GUI=OFF -DTARVIK_TESTS=OFF -DTARVIK_WERROR=ON >/dev/null
fi
cmake --build "$dir" --target fuzz_targets --parallel "$(nproc)"

targets=()
for f in "$dir"/fuzz/*.seeds; do targets+=("$(basename "$f" .seeds)"); done

# Runs one target for $2 seconds; fails with the input that made it fail.
run() {
  local target=$1 seconds=$2
  local seeds="$dir/seeds/$target" corpus="$dir/corpus/$target" findings="$dir/findings/$target"
  rm -rf "$seeds"
  mkdir -p "$seeds" "$corpus" "$findings"
  while IFS= read -r path; do
    [ -n "$path" ] || continue
    if [ -d "$path" ]; then
      find "$path" -type f -exec cp --backup=numbered -t "$seeds" {} +
    elif [ -f "$path" ]; then
      cp --backup=numbered -t "$seeds" "$path"
    fi
  done <"$dir/fuzz/$target.seeds"
  while IFS= read -r tree; do
    [ -n "$tree" ] || continue
    "$dir/fuzz/tarvik_fuzz_pack" "$tree" >"$seeds/$(basename "$tree").tree"
  done <"$dir/fuzz/$target.trees"
  # AddressSanitizer keeps the stack of every distinct allocation site for good, so a long run
  # grows by a few hundred bytes an input with no leak of ours (heaptrack on the same inputs
  # without sanitizers stays flat): the memory limit leaves room for an hour of that.
  local options=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=4096 -print_final_stats=1
                 -artifact_prefix="$findings/")
  local dict
  dict=$(cat "$dir/fuzz/$target.dict-path")
  [ -z "$dict" ] || options+=(-dict="$dict")
  local saved=tests/fuzz/$target
  [ -d "$saved" ] || saved=
  echo "== $target: $seconds s"
  local status=0
  # The trees a target unpacks go to memory when there is a memory file system.
  local tmp=${TMPDIR:-/tmp}
  [ -w /dev/shm ] && tmp=/dev/shm
  TMPDIR=$tmp ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1} \
    UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1} \
    "$dir/fuzz/fuzz_$target" "${options[@]}" "$corpus" "$seeds" $saved 2>"$dir/$target.log" || status=$?
  grep -E "^(#[0-9]+ +(DONE|INITED)|stat::number_of_executed_units|stat::peak_rss_mb)|cov:" "$dir/$target.log" |
    grep -vE "NEW|REDUCE|pulse" | tail -4
  if [ "$status" -ne 0 ]; then
    tail -60 "$dir/$target.log"
    for finding in "$findings"/*; do
      [ -f "$finding" ] || continue
      echo "fuzz_$target failed on $finding; saved as tests/fuzz/$target/$(basename "$finding") it becomes a test."
      if [ "${CI:-}" = true ]; then
        echo "Its bytes (base64):"
        base64 "$finding"
      fi
    done
    return 1
  fi
}

case "${1:-}" in
  --list) printf '%s\n' "${targets[@]}" ;;
  --all)
    total=${2:?usage: scripts/fuzz.sh --all SECONDS}
    each=$(( total / ${#targets[@]} ))
    [ "$each" -ge 10 ] || each=10
    failed=0
    for t in "${targets[@]}"; do run "$t" "$each" || failed=1; done
    exit "$failed"
    ;;
  ""|-*) sed -n '2,8p' "$0" | sed 's/^# \{0,1\}//' >&2; exit 2 ;;
  *)
    [ -f "$dir/fuzz/$1.seeds" ] || { echo "No fuzz target \"$1\"; scripts/fuzz.sh --list names them." >&2; exit 2; }
    run "$1" "${2:-600}"
    ;;
esac
