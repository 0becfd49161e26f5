#!/usr/bin/env bash
# Applying the dock folders with 50 favourites and 10 folders of 6 apps each, the whole
# `tarvik dock folders apply` command, process start included:
#   - after one folder changed (renamed between runs): its launcher and its ten icon sizes
#     rebuilt, the others found up to date, the dock's list synced;
#   - with --all: every folder rebuilt;
# against `gsettings set` writing the same list, the least any change to the dash costs. One
# hyperfine run, in a temporary home with GNOME Shell's schema and GSettings' keyfile back-end.
# usage: bench/dock_apply.sh [path/to/tarvik]   (default build/release/tarvik)
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh bench
if [ -n "${1:-}" ]; then
  tarvik=$(realpath "$1")
else
  [ -x build/release/tarvik-folder ] || scripts/build.sh release >/dev/null
  tarvik=$PWD/build/release/tarvik
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/schemas" "$work/share/applications" "$work/home"
cp tests/fixtures/gnome-shell/org.gnome.shell.gschema.xml "$work/schemas/"
glib-compile-schemas "$work/schemas"
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share
export XDG_DATA_DIRS=$work/share GSETTINGS_SCHEMA_DIR=$work/schemas GSETTINGS_BACKEND=keyfile
unset DISPLAY WAYLAND_DISPLAY

# 60 applications, each with a 256-pixel icon of its own colour, as apps install them.
for n in $(seq 1 60); do
  printf '[Desktop Entry]\nType=Application\nName=App %s\nExec=true\nIcon=bench-app%s\n' "$n" "$n" \
    > "$work/share/applications/bench-app$n.desktop"
  mkdir -p "$work/share/icons/hicolor/256x256/apps"
  convert -size 256x256 "xc:hsl($((n * 6)),70%,50%)" "$work/share/icons/hicolor/256x256/apps/bench-app$n.png"
done
favourites=$(for n in $(seq 1 50); do printf "'bench-app%s.desktop', " "$n"; done)
gsettings set org.gnome.shell favorite-apps "[${favourites%, }]"
for f in $(seq 0 9); do
  apps=()
  for a in $(seq 1 6); do apps+=("bench-app$((f * 6 + a)).desktop"); done
  "$tarvik" dock folders create "Folder $f" "${apps[@]}" --yes >/dev/null
done
"$tarvik" dock list | tail -n 3
list=$(gsettings get org.gnome.shell favorite-apps)

# Renames the first folder, so the next apply has one folder to rebuild.
rename="/usr/bin/python3 -c \"import json,sys; p=sys.argv[1]; f=json.load(open(p)); \
f[0]['name']='Folder A' if f[0]['name']!='Folder A' else 'Folder B'; json.dump(f, open(p,'w'))\" \
$XDG_DATA_HOME/Tarvik/DockFolders/folders.json"
hyperfine --warmup 2 --runs 20 --export-markdown "$work/result.md" \
  -n "tarvik dock folders apply, one folder changed" --prepare "$rename" \
  "$tarvik dock folders apply --yes" \
  -n "tarvik dock folders apply --all (10 folders rebuilt)" "$tarvik dock folders apply --all --yes" \
  -n "gsettings set favorite-apps (the same list)" "gsettings set org.gnome.shell favorite-apps \"$list\""
cat "$work/result.md"
