#!/bin/bash
# Takes resources/screenshot.png: the shell of a build folder after a run of examples/sample.tex, with the frame that a
# window manager gives it, on a display of its own.
#
#   scripts/screenshot.sh [BUILD]

set -eu
source_folder=$(dirname "$(dirname "$(readlink -f "$0")")")
build=$(readlink -f "${1:-$source_folder/build}")
folder=$(mktemp -d)
export HOME=$folder XDG_CONFIG_HOME=$folder/config XDG_DATA_HOME=$folder/data XDG_CACHE_HOME=$folder/cache
export XDG_RUNTIME_DIR=$folder/run QT_QPA_PLATFORM=xcb
unset WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS
mkdir -m 700 "$XDG_RUNTIME_DIR" "$XDG_CONFIG_HOME"
mkdir "$folder/harbour"
cp "$source_folder/examples/sample.tex" "$folder/harbour"
processes=()
trap 'kill "${processes[@]}" 2>/dev/null || true; rm -rf "$folder"' EXIT

# Looks until the command says something, and prints it.
until_said() {
    local said=
    for _ in $(seq 600); do
        said=$("$@" 2>/dev/null) && [[ -n $said ]] && echo "$said" && return
        sleep 0.1
    done
    echo "waited in vain for: $*" >&2
    return 1
}

Xvfb -displayfd 3 -screen 0 1000x800x24 -nolisten tcp 3>"$folder/display" 2>/dev/null &
processes+=($!)
DISPLAY=:$(until_said cat "$folder/display")
export DISPLAY
openbox 2>/dev/null &
processes+=($!)
until_said xprop -root _NET_SUPPORTING_WM_CHECK >/dev/null
"$build/lib/quillon/setpaths.app/Contents/Linux/setpaths" --defaults
sed -i 's/^AUTOVIEW=.*/AUTOVIEW=0\nTEXWINDOW=100 60 560 800/' "$XDG_CONFIG_HOME/Quillon Preferences"
# Started from the folder, so that the console names it as a person would.
cd "$folder/harbour"
dbus-run-session -- "$build/bin/quillon" sample.tex >/dev/null 2>&1 &
processes+=($!)
window=$(until_said xdotool search --onlyvisible --name '^Quillon$')
until_said ls "$folder/harbour/sample.pdf" >/dev/null
# The picture is taken when two looks at the window show the same.
before=
while picture=$(import -window "$window" rgb:- | md5sum) && [[ $picture != "$before" ]]; do
    before=$picture
    sleep 1
done
import -frame -strip -window "$window" "$source_folder/resources/screenshot.png"
xdotool key ctrl+q # ends the shell, and with it its bus
wait "${processes[-1]}" || true
