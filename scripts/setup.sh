#!/usr/bin/env bash
# Installs the Debian 12 packages Tarvik needs to build, test and run; with "bench", also the
# tools the benchmarks compare Tarvik with; with "fuzz", clang and its libFuzzer.
# Idempotent: when everything is present it says nothing and changes nothing.
set -euo pipefail

packages=(
  # toolchain
  build-essential cmake ninja-build pkg-config ccache git file dpkg-dev
  # libraries
  # (Qt Charts' CMake files need Qt OpenGL's, which qt6-charts-dev doesn't pull in)
  qt6-base-dev qt6-base-dev-tools qt6-charts-dev libqt6opengl6-dev qt6-svg-dev qt6-qpa-plugins
  qt6-image-formats-plugins libgl-dev libxkbcommon-dev
  qcoro-qt6-dev libcli11-dev qtkeychain-qt6-dev libsimdjson-dev libevdev-dev libssl-dev
  # GSettings (the dock's favourites) and desktop entries through GIO
  libglib2.0-dev
  # the test servers' gzip bomb
  zlib1g-dev
  # tests and benchmarks
  googletest libgtest-dev libgmock-dev libbenchmark-dev hyperfine
  # window checks and desktop integration
  xvfb xauth imagemagick trayer appstream desktop-file-utils fonts-dejavu-core
  dbus dbus-x11 hicolor-icon-theme adwaita-icon-theme
  # a Secret Service for the pasted-key tests
  gnome-keyring
  # logind and the screen saver as D-Bus mocks; key presses for the keyboard-lock test
  python3-dbusmock xdotool
  # the Trash tools that must list and restore what Tarvik trashes
  trash-cli gvfs libglib2.0-bin e2fsprogs
)
if [ "${1:-}" = "fuzz" ]; then
  # llvm for llvm-symbolizer, which names the lines of a failure
  packages+=(clang libclang-rt-dev llvm)
fi
if [ "${1:-}" = "bench" ]; then
  packages+=(procps htop btop tmux gdu jq)
  # the shaped-link speed test: the link (namespaces, tbf, NFQUEUE and its delay line), curl and
  # the Node runtime of the reference engine
  packages+=(iproute2 iptables libnetfilter-queue-dev libmnl-dev iputils-ping time curl nodejs)
  # large files, duplicates and folder sizes: the usual duplicate finders, find's faster
  # cousin (its binary is `fdfind`) and setpriv (util-linux) to run them all unprivileged
  packages+=(jdupes fdupes rmlint fd-find util-linux)
  # npm comes with some builds of nodejs; Debian's own nodejs needs its npm package
  command -v npm >/dev/null 2>&1 || packages+=(npm)
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q '^install ok installed$'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
if [ "$(id -u)" -ne 0 ]; then
  if command -v sudo >/dev/null 2>&1; then
    sudo="sudo"
  else
    echo "Tarvik set-up needs these Debian packages and root rights to install them: ${missing[*]}" >&2
    exit 1
  fi
fi

echo "Installing ${#missing[@]} Debian packages: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
