#!/bin/sh
# Runs a command on a screen of its own: an X server in memory, with a window manager.
#
#   on_screen.sh COMMAND [ARGUMENT...]
set -eu

folder=$(mktemp -d)
server=''
manager=''
finish() {
    status=$?
    for process in $manager $server; do
        kill "$process" 2>/dev/null || true
        wait "$process" 2>/dev/null || true
    done
    rm -rf "$folder"
    exit "$status"
}
trap finish EXIT
trap 'exit 1' HUP INT TERM

# The server tells the number of its display when it is ready.
mkfifo "$folder/display"
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$folder/display" \
    >"$folder/server.log" 2>&1 &
server=$!
read -r number <"$folder/display"

# Nothing of the session that this may run in.
unset WAYLAND_DISPLAY SDL_VIDEODRIVER XAUTHORITY
export DISPLAY=":$number"

openbox >/dev/null 2>&1 &
manager=$!
for _ in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25 26 27 28 29 30; do
    # The window manager is there as soon as the root window has this property.
    if xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'; then
        break
    fi
    sleep 0.1
done

"$@"
