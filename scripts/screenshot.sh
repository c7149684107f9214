#!/usr/bin/env bash
# Usage: scripts/screenshot.sh [OUT]        (OUT defaults to docs/screenshot.png)
#
# Builds if needed (BUILD_DIR, default build), then pictures the add-on beside the contact manager on a private X
# server (scripts/x11-session.sh): a fresh sample database, a fresh program folder seeded by the add-on itself and
# fresh preferences, so the picture is what a first run looks like. Nothing of the user's is read or written.
set -euo pipefail
cd "$(dirname "$0")/.."
build="${BUILD_DIR:-build}"

if [ "${1:-}" != "--inside-session" ]; then
    out="${1:-docs/screenshot.png}"
    mkdir -p "$(dirname "$out")"
    out="$(cd "$(dirname "$out")" && pwd)/$(basename "$out")"
    bash scripts/build.sh >/dev/null
    X11_SESSION_SCREEN="${X11_SESSION_SCREEN:-1400x900x24}" exec bash scripts/x11-session.sh bash "$0" --inside-session "$out"
fi
out="$2"

work="$(mktemp -d "${TMPDIR:-/tmp}/corvalent-screenshot.XXXXXX")"
pids=()
finish() {
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
    wait 2>/dev/null || true
    rm -rf "$work"
}
trap finish EXIT

export HOME="$work/user"
export XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" XDG_CACHE_HOME="$work/cache"
export CORVALENT_HOME="$work/program"
export QT_QPA_PLATFORM=xcb
mkdir -p "$HOME"

# The first visible window whose title matches, within a minute.
window() {
    timeout 60 xdotool search --sync --onlyvisible --name "$1" | head -n 1
}

"$build/host/corvalent-contacts" --sample "$work/Sample.cvdb"
"$build/host/corvalent-contacts" "$work/Sample.cvdb" &
pids+=($!)
contacts="$(window '^Corvalent Contacts')"
[ -n "$contacts" ] || { echo "screenshot: the contact manager's window did not appear" >&2; exit 1; }

# The contact manager serves the bus before it shows its window, so the add-on finds it.
"$build/src/app/corvalent" &
pids+=($!)
addon="$(window '^Corvalent$')"
[ -n "$addon" ] || { echo "screenshot: the add-on's window did not appear" >&2; exit 1; }

# Side by side, the add-on to the right of the contact manager, as a user would keep them.
xdotool windowmove --sync "$contacts" 24 24
eval "$(xdotool getwindowgeometry --shell "$contacts")"
xdotool windowmove --sync "$addon" $((X + WIDTH + 24)) 24

# Painting follows mapping: take the picture once two looks a moment apart agree.
previous=""
for _ in $(seq 1 50); do
    current="$(import -window root rgb:- | md5sum)"
    [ "$current" = "$previous" ] && break
    previous="$current"
    sleep 0.2
done
import -window root -define png:exclude-chunks=date,time "$out"
echo "screenshot: $out"
