#!/usr/bin/env bash
# Screenshots of every section of the window, for looking at the look: under a private X server
# (Xvfb) and a private session bus whose settings portal says light or dark, in a temporary home
# with a few files to find.
#
# usage: tools/screenshots/take.sh TARVIK OUT_DIR [light|dark] [SCALE]
#   TARVIK   the tarvik executable (build/test/tarvik or build/release/tarvik)
#   OUT_DIR  where the PNGs go: <scheme>-<scale>x-<nn>-<section>.png
#   SCALE    1 (980×640, the default window) or 2 (the same window at twice the pixels)
set -euo pipefail

tarvik=$(realpath "$1")
out=$(realpath -m "$2")
scheme=${3:-light}
scale=${4:-1}
mkdir -p "$out"

work=$(mktemp -d)
trap 'kill $(jobs -p) $(cat "$work/bus.pid" 2>/dev/null) 2>/dev/null || true; rm -rf "$work"' EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share
export XDG_CACHE_HOME=$work/home/.cache XDG_RUNTIME_DIR=$work/run
mkdir -p "$HOME/Downloads" "$HOME/Videos" "$XDG_CACHE_HOME/thumbnails" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
# Something for each cleanup screen to find.
head -c 150000000 /dev/zero >"$HOME/Videos/holiday.mkv"
head -c 120000000 /dev/urandom >"$HOME/Downloads/ubuntu.iso"
cp "$HOME/Downloads/ubuntu.iso" "$HOME/Downloads/ubuntu (copy).iso"
head -c 30000000 /dev/urandom >"$XDG_CACHE_HOME/thumbnails/big.cache"
touch -d '2 years ago' "$HOME/Videos/holiday.mkv"

# A stand-in brew that answers with a real machine's captured inventory.
fixtures=$(cd "$(dirname "$0")/../../tests/fixtures/homebrew" && pwd)
mkdir -p "$work/bin"
cat >"$work/bin/brew" <<BREW
#!/bin/bash
case "\$1" in
  --version) echo 'Homebrew 4.4.1' ;;
  info) cat '$fixtures/assembled/info_v2_installed_assembled.json' ;;
  outdated) cat '$fixtures/brew_dart/outdated_v2.json' ;;
  services) exit 1 ;;
  *) echo ok ;;
esac
BREW
chmod +x "$work/bin/brew"
export PATH=$work/bin:$PATH

# GNOME Shell's favourites through GSettings' keyfile back-end: two of this machine's apps in the
# dock, and a folder of up to four.
mkdir -p "$work/schemas"
cp "$(dirname "$0")/../../tests/fixtures/gnome-shell/org.gnome.shell.gschema.xml" "$work/schemas/"
glib-compile-schemas "$work/schemas"
export GSETTINGS_SCHEMA_DIR=$work/schemas GSETTINGS_BACKEND=keyfile
mapfile -t apps < <(grep -L '^NoDisplay=true' /usr/share/applications/*.desktop |
                    head -n 4 | xargs -n1 basename)
if [ "${#apps[@]}" -ge 2 ]; then
    gsettings set org.gnome.shell favorite-apps "['${apps[0]}', '${apps[1]}']"
    ASAN_OPTIONS=detect_leaks=0 "$tarvik" dock folders create "Tools" "${apps[@]}" --yes \
        >/dev/null || true
fi

# A private session bus with a stand-in for the desktop's settings portal.
dbus-daemon --session --fork --print-address=3 --print-pid=4 3>"$work/bus" 4>"$work/bus.pid"
export DBUS_SESSION_BUS_ADDRESS=$(head -n1 "$work/bus")
value=$([ "$scheme" = dark ] && echo 1 || echo 2)
/usr/bin/python3 -m dbusmock org.freedesktop.portal.Desktop /org/freedesktop/portal/desktop \
    org.freedesktop.portal.Settings >/dev/null 2>&1 &
for _ in $(seq 50); do
    gdbus introspect --session --dest org.freedesktop.portal.Desktop \
        --object-path /org/freedesktop/portal/desktop >/dev/null 2>&1 && break
    sleep 0.1
done
gdbus call --session --dest org.freedesktop.portal.Desktop \
    --object-path /org/freedesktop/portal/desktop \
    --method org.freedesktop.DBus.Mock.AddMethod '' Read ss v \
    "ret = dbus.UInt32($value, variant_level=2)" >/dev/null

width=$((980 * scale + 40))
height=$((640 * scale + 40))
# Xvfb picks a free display and names it, so runs side by side never share one.
Xvfb -displayfd 5 -screen 0 "${width}x${height}x24" -nolisten tcp 5>"$work/display" &
for _ in $(seq 50); do [ -s "$work/display" ] && break; sleep 0.1; done
export DISPLAY=:$(head -n1 "$work/display")
for _ in $(seq 50); do xdotool getmouselocation >/dev/null 2>&1 && break; sleep 0.1; done

export QT_SCALE_FACTOR=$scale ASAN_OPTIONS=detect_leaks=0
"$tarvik" settings set menuBarShowsStats true >/dev/null
"$tarvik" gui >"$out/tarvik-$scheme-$scale.log" 2>&1 &
for _ in $(seq 300); do xdotool search --onlyvisible --name '^Tarvik$' >/dev/null 2>&1 && break; sleep 0.1; done
window=$(xdotool search --onlyvisible --name '^Tarvik$' | head -n1)
xdotool windowmove "$window" 0 0
sleep 2

# The sections in sidebar order, stepped through with Ctrl+Page Down from Smart Scan.
sections=(overview systemJunk largeFiles duplicates projectJunk spaceLens monitor devServers
          agents speedTest deviceCheck systemInfo uninstaller homebrew dockFolders keepAwake
          settings)
n=0
for name in "${sections[@]}"; do
    if [ "$n" -gt 0 ]; then
        xdotool windowfocus "$window" key --clearmodifiers ctrl+Next || true
    fi
    case $name in
        systemJunk) sleep 6 ;; # measured by Smart Scan already
        largeFiles|duplicates) sleep 0.5; xdotool key --clearmodifiers alt+s; sleep 6 ;;
        *) sleep 2 ;;
    esac
    n=$((n + 1))
    file=$(printf '%s/%s-%sx-%02d-%s.png' "$out" "$scheme" "$scale" "$n" "$name")
    import -window root -crop "$((980 * scale))x$((640 * scale))+0+0" "$file"
    echo "$file"
done
