#!/usr/bin/env bash
# Installs what is missing, builds, starts the contact manager with its sample contacts (unless one is already
# running) and the add-on beside it. With arguments, runs corvalent-tool with them instead.
#
# It returns once the add-on has ended and, when this script started the contact manager, the contact manager too:
# closing the add-on leaves the contacts open to browse, and a contact manager started here must not outlive the
# script that may own its session bus (see below). A contact manager that was already running is the user's and is
# left alone. Ctrl+C ends what this script started.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
# Only what runs here: the programs, the data a new program folder is seeded from and the manual of the Help menu.
# The tests and benchmarks are built by the test command.
BUILD_TARGETS="corvalent corvalent-contacts corvalent-tool staged_data manual" bash scripts/build.sh
build="${BUILD_DIR:-build}"
tool="$build/src/tool/corvalent-tool"
if [ $# -gt 0 ]; then
    exec "$tool" "$@"
fi
bash scripts/register-desktop.sh

if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    echo "No desktop session (DISPLAY is not set): the contact manager needs one. Services in the program folder:"
    "$tool" services
    exit 0
fi
if [ -z "${DBUS_SESSION_BUS_ADDRESS:-}" ]; then
    # A desktop without a session bus: give the two programs one of their own, which lives as long as this script.
    exec dbus-run-session -- bash "$0"
fi

contacts_pid=""
addon_pid=""
stop_ours() {
    for pid in $addon_pid $contacts_pid; do
        kill "$pid" 2>/dev/null || true
    done
}
trap 'stop_ours; exit 130' INT
trap 'stop_ours; exit 143' TERM

if ! "$tool" capture "OpenStreetMap address" >/dev/null 2>&1; then
    "$build/host/corvalent-contacts" &
    contacts_pid=$!
    for _ in $(seq 1 100); do
        "$tool" capture "OpenStreetMap address" >/dev/null 2>&1 && break
        kill -0 "$contacts_pid" 2>/dev/null || { echo "corvalent-contacts did not start" >&2; exit 1; }
        sleep 0.2
    done
fi
echo "== What the add-on captures from the current contact for 'OpenStreetMap address'"
"$tool" capture "OpenStreetMap address" || true
echo
echo "Browse the contacts in the Corvalent Contacts window: the Corvalent window beside it follows, and GO opens"
echo "the lookup. 'bash scripts/run.sh capture SERVICE' shows a capture, 'bash scripts/run.sh --help' everything"
echo "corvalent-tool does."

# The add-on asks for the contact manager at start, which the capture above has shown to be answering.
"$build/src/app/corvalent" &
addon_pid=$!
code=0
wait "$addon_pid" || code=$?
addon_pid=""
if [ -n "$contacts_pid" ]; then
    wait "$contacts_pid" || true
fi
exit "$code"
