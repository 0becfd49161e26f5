#!/usr/bin/env bash
# Sets up what is missing, builds, and runs Tarvik: the window when a display is present,
# otherwise the machine summary in the terminal. Arguments are passed to tarvik.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh release >&2
exec build/release/tarvik "$@"
