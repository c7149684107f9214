#!/usr/bin/env bash
# Installs what is missing, builds, and runs corvalent-tool. With no arguments it lists the services of the
# program folder (seeded with the shipped presets on first run) and previews the request GO would send for a
# sample contact; with arguments it runs corvalent-tool with them.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh
tool=build/src/tool/corvalent-tool
if [ $# -gt 0 ]; then
    exec "$tool" "$@"
fi
echo "== Services in the program folder"
"$tool" services
echo
echo "== What GO would open for 'OpenStreetMap address' and a sample contact"
"$tool" request "OpenStreetMap address" --field 0="Hélène Côté" --field 2="1234 rue Sainte-Catherine" \
    --field 3="Montréal" --field 4="QC" --field 5="H3G 1P1" --field 6="Canada"
echo
echo "Run 'bash scripts/run.sh --help' for everything corvalent-tool does."
