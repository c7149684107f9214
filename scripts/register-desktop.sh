#!/usr/bin/env bash
# Makes the desktop of the current user know the contact manager built in this tree: its database file type, and
# corvalent-contacts (this build) as the program that opens such files. The add-on asks the desktop which program
# that is to find the contact manager's phone masks, and the shell's "open" of a database then starts it.
# Safe to run twice; touches only the user's own ~/.local/share.
set -euo pipefail
cd "$(dirname "$0")/.."
program="$(pwd)/${BUILD_DIR:-build}/host/corvalent-contacts"
data_home="${XDG_DATA_HOME:-$HOME/.local/share}"
applications="$data_home/applications"

mkdir -p "$applications" "$data_home/mime/packages"
cp data/corvalent-contacts-mime.xml "$data_home/mime/packages/corvalent-contacts.xml"
update-mime-database "$data_home/mime" >/dev/null 2>&1 || true
sed "s|^Exec=corvalent-contacts|Exec=\"$program\"|" data/corvalent-contacts.desktop > "$applications/corvalent-contacts.desktop"
update-desktop-database "$applications" >/dev/null 2>&1 || true
xdg-mime default corvalent-contacts.desktop application/x-corvalent-contacts
