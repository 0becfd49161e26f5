# Sourced by the comparison scripts from the top of the repository: sets $tarvik to the program
# to measure — the one named as the script's first argument, else build/release/tarvik, built
# first so that the figures are of the current code.
if [ -n "${1:-}" ]; then
  tarvik=$(realpath "$1")
else
  if [ -d build/release ]; then
    cmake --build build/release --target tarvik >/dev/null
  else
    scripts/build.sh release >/dev/null
  fi
  tarvik=$PWD/build/release/tarvik
fi
