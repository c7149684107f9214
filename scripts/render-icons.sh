#!/usr/bin/env bash
# Renders data/icons/corvalent.svg into the PNG sizes the desktop's icon theme wants (data/icons/corvalent-N.png).
# The PNGs are committed, so a build needs no SVG renderer; run this again after changing the SVG.
set -euo pipefail
cd "$(dirname "$0")/.."
command -v rsvg-convert >/dev/null || { echo "render-icons: rsvg-convert is missing (bash scripts/install-deps.sh installs librsvg2-bin)" >&2; exit 1; }
for size in 16 32 48 64 128 256; do
    rsvg-convert --width "$size" --height "$size" --output "data/icons/corvalent-$size.png" data/icons/corvalent.svg
done
