#!/usr/bin/env bash
# Usage: scripts/screenshot.sh [OUT]        (OUT defaults to docs/screenshot.png)
#
# Builds if needed (BUILD_DIR, default build), then pictures the add-on beside the contact manager on a private X
# server (scripts/x11-session.sh): a fresh sample database, a fresh program folder seeded by the add-on itself and
# fresh preferences, so the picture is what a first run looks like. Nothing of the user's is read or written.
# A second picture, OUT with "-grab" before its extension, shows a grab of several lines from Firefox ESR with the
# Smart Data Collector open beside the add-on, and a third, with "-editor", the service editor on the pressed service.
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
picture() {
    local previous="" current
    for _ in $(seq 1 50); do
        current="$(import -window root rgb:- | md5sum)"
        [ "$current" = "$previous" ] && break
        previous="$current"
        sleep 0.2
    done
    import -window root -define png:exclude-chunks=date,time "$1"
    echo "screenshot: $1"
}
picture "$out"

# Edit > Edit a Service... (the first item that can be chosen) on the pressed service, then closed again.
xdotool windowactivate --sync "$addon"
xdotool key --clearmodifiers alt+e Return
editor="$(window '^Edit a service$')"
[ -n "$editor" ] || { echo "screenshot: the service editor did not appear" >&2; exit 1; }
xdotool windowmove --sync "$editor" 24 24
picture "${out%.*}-editor.${out##*.}"
xdotool windowactivate --sync "$editor" key --clearmodifiers Escape

# A result page in the browser with a few lines selected, as a user leaves it before pressing Grab.
command -v firefox-esr >/dev/null || { echo "screenshot: firefox-esr is missing, no grab picture" >&2; exit 0; }
cat >"$work/result.html" <<'HTML'
<!DOCTYPE html>
<html><head><meta charset="utf-8"><title>Directory result</title>
<style>body{font:15px sans-serif;margin:2em} #pick{background:#fff;border:1px solid #ccc;padding:1em;width:22em}</style>
</head><body><h2>Directory result</h2><p>One listing found:</p>
<div id="pick">Hélène Tremblay<br>Phone: (514) 555-0199<br>1234 rue Sainte-Catherine Ouest<br>Montréal (Québec) H3G 1P1</div>
<script>window.getSelection().selectAllChildren(document.getElementById('pick'));</script>
</body></html>
HTML
mkdir -p "$work/firefox"
cat >"$work/firefox/user.js" <<'PREFS'
user_pref("browser.shell.checkDefaultBrowser", false);
user_pref("browser.startup.homepage_override.mstone", "ignore");
user_pref("browser.aboutwelcome.enabled", false);
user_pref("datareporting.policy.dataSubmissionEnabled", false);
user_pref("toolkit.telemetry.reportingpolicy.firstRun", false);
user_pref("browser.sessionstore.resume_from_crash", false);
user_pref("app.update.auto", false);
PREFS
firefox-esr --no-remote --new-instance --profile "$work/firefox" "file://$work/result.html" >/dev/null 2>&1 &
pids+=($!)
browser="$(window 'Directory result')"
[ -n "$browser" ] || { echo "screenshot: Firefox's window did not appear" >&2; exit 1; }
xdotool windowsize --sync "$browser" 900 600
xdotool windowmove --sync "$browser" 24 24
# The add-on at the screen's right edge, so that the collector has room on its left, over the browser's margin.
xdotool windowmove --sync "$addon" 1010 24
xdotool windowactivate --sync "$addon"
# Ctrl+1: Grab beside the first box. Several lines open the collector.
xdotool key --clearmodifiers ctrl+1
collector="$(window '^Smart Data Collector$')"
[ -n "$collector" ] || { echo "screenshot: the Smart Data Collector did not appear" >&2; exit 1; }
picture "${out%.*}-grab.${out##*.}"
