#!/usr/bin/env bash
# Usage: scripts/x11-session.sh CMD [ARGS...]
#
# Runs CMD on an X server and a session bus of its own: Xvfb on a free display, openbox as the window manager
# (always-on-top, activation and the client list need one that speaks EWMH), and dbus-run-session. Whatever DISPLAY,
# XAUTHORITY or bus the caller has is replaced, so nothing reaches the user's desktop and nothing of the user's
# desktop is seen. Everything started here is stopped on the way out; the exit code is CMD's.
#
# X11_SESSION_SCREEN sets the screen (default 1400x900x24).
set -euo pipefail

if [ $# -eq 0 ]; then
    echo "usage: $0 CMD [ARGS...]" >&2
    exit 2
fi
for program in Xvfb openbox xauth xprop dbus-run-session mcookie; do
    if ! command -v "$program" >/dev/null; then
        echo "x11-session: $program is missing (bash scripts/install-deps.sh installs it)" >&2
        exit 127
    fi
done

screen="${X11_SESSION_SCREEN:-1400x900x24}"
work="$(mktemp -d "${TMPDIR:-/tmp}/x11-session.XXXXXX")"
xvfb_pid=""
wm_pid=""
cmd_pid=""

# Every process below PID, children before their parents are listed, so that a parent cannot start a replacement.
descendants() {
    local child
    for child in $(ps -o pid= --ppid "$1" 2>/dev/null); do
        descendants "$child"
        echo "$child"
    done
}

stop() {
    local pid=$1
    [ -n "$pid" ] && kill -0 "$pid" 2>/dev/null || return 0
    kill -TERM "$pid" 2>/dev/null || true
    # Bounded: a process that ignores the polite request is killed after two seconds.
    for _ in $(seq 1 40); do
        kill -0 "$pid" 2>/dev/null || return 0
        sleep 0.05
    done
    kill -KILL "$pid" 2>/dev/null || true
}

cleanup() {
    local code=$?
    trap - EXIT INT TERM HUP
    # CMD normally ends by itself; when this script is interrupted, its whole tree goes (dbus-run-session does not
    # pass signals on, and would leave its bus daemon behind).
    if [ -n "$cmd_pid" ] && kill -0 "$cmd_pid" 2>/dev/null; then
        local -a pids
        mapfile -t pids < <(descendants "$cmd_pid"; echo "$cmd_pid")
        kill -TERM "${pids[@]}" 2>/dev/null || true
        for pid in "${pids[@]}"; do stop "$pid"; done
    fi
    stop "$wm_pid"
    stop "$xvfb_pid"
    wait 2>/dev/null || true
    rm -rf "$work"
    exit "$code"
}
trap cleanup EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

# The display number is not known before the server has chosen it, so the cookie is one for any display.
export XAUTHORITY="$work/Xauthority"
: >"$XAUTHORITY"
echo "ffff 0000  0000  0012 4d49542d4d414749432d434f4f4b49452d31 0010 $(mcookie)" | xauth -q -f "$XAUTHORITY" nmerge -

# Xvfb writes its display number to the pipe once it accepts connections; it picks a display nobody holds.
mkfifo "$work/display"
Xvfb -displayfd 3 -screen 0 "$screen" -nolisten tcp -noreset -auth "$XAUTHORITY" \
    3>"$work/display" >"$work/xvfb.log" 2>&1 &
xvfb_pid=$!
display=""
read -r -t 30 display <"$work/display" || true
if ! [[ "$display" =~ ^[0-9]+$ ]]; then
    echo "x11-session: Xvfb did not start:" >&2
    cat "$work/xvfb.log" >&2
    exit 1
fi
export DISPLAY=":$display"
unset WAYLAND_DISPLAY
export XDG_RUNTIME_DIR="$work/runtime"
mkdir -m 700 "$XDG_RUNTIME_DIR"

# openbox with its shipped configuration, whatever the user keeps in ~/.config/openbox.
XDG_CONFIG_HOME="$work/config" XDG_CACHE_HOME="$work/cache" openbox --sm-disable >"$work/openbox.log" 2>&1 &
wm_pid=$!
wm_ready=""
for _ in $(seq 1 400); do
    if xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q "window id"; then
        wm_ready=yes
        break
    fi
    kill -0 "$wm_pid" 2>/dev/null || break
    sleep 0.05
done
if [ -z "$wm_ready" ]; then
    echo "x11-session: openbox did not start:" >&2
    cat "$work/openbox.log" >&2
    exit 1
fi

# In the background, so that a signal to this script is handled at once rather than after CMD ends.
dbus-run-session -- "$@" <&0 &
cmd_pid=$!
code=0
wait "$cmd_pid" || code=$?
cmd_pid=""
exit "$code"
