#!/usr/bin/env bash
# Sets up what is missing, builds the test tree (Debug, AddressSanitizer and UBSan) and runs
# the whole test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh test
# Qt and fontconfig keep caches for the life of the process that LeakSanitizer reports as
# leaks; real leaks in our code are caught by the address checks and by valgrind on demand.
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=0:abort_on_error=0}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
export QT_QPA_PLATFORM=offscreen
cd build/test
ctest --output-on-failure --parallel "$(nproc)" --timeout 300
