#!/usr/bin/env bash
# Configures (once) and builds one of Tarvik's build trees incrementally.
# usage: scripts/build.sh release|test
set -euo pipefail
cd "$(dirname "$0")/.."

kind=${1:-release}
case "$kind" in
  release) dir=build/release; flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARVIK_TESTS=OFF) ;;
  test)    dir=build/test;    flags=(-DCMAKE_BUILD_TYPE=Debug -DTARVIK_TESTS=ON -DTARVIK_SANITIZE=ON -DTARVIK_WERROR=ON) ;;
  *) echo "usage: scripts/build.sh release|test" >&2; exit 2 ;;
esac

if [ ! -f "$dir/CMakeCache.txt" ] || ! grep -q "^TARVIK_WERROR" "$dir/CMakeCache.txt"; then
  cmake -S . -B "$dir" -G Ninja "${flags[@]}" >/dev/null
fi
cmake --build "$dir" --parallel "$(nproc)"
