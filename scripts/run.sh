#!/usr/bin/env bash
# Installs what is missing, builds, and starts the contact manager with its sample contacts (unless one is already
# running), then shows what the add-on captures from it and what GO would open. With arguments, runs
# corvalent-tool with them instead.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh
tool=build/src/tool/corvalent-tool
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
    # A desktop without a session bus: give the two programs one of their own.
    exec dbus-run-session -- bash "$0"
fi

contacts_pid=""
if ! "$tool" capture "OpenStreetMap address" >/dev/null 2>&1; then
    build/host/corvalent-contacts &
    contacts_pid=$!
    for _ in $(seq 1 100); do
        "$tool" capture "OpenStreetMap address" >/dev/null 2>&1 && break
        sleep 0.2
    done
fi
echo "== What the add-on captures from the current contact for 'OpenStreetMap address'"
"$tool" capture "OpenStreetMap address" || true
echo
echo "Browse the contacts in the Corvalent Contacts window; 'bash scripts/run.sh capture SERVICE' shows the capture"
echo "again, 'bash scripts/run.sh --help' everything corvalent-tool does."
if [ -n "$contacts_pid" ]; then
    wait "$contacts_pid"
fi
