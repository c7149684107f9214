#!/usr/bin/env bash
# Usage: check_manual.sh PDF HTML CHAPTER.md...
#
# The built manual holds every chapter, in order, each beginning on a page of its own (so each has a page or more),
# and its HTML page holds every chapter title and carries its pictures inside it.
set -euo pipefail
pdf=$1 html=$2
shift 2
command -v pdftotext >/dev/null || { echo "pdftotext is missing (bash scripts/install-deps.sh installs poppler-utils)" >&2; exit 1; }
[ -s "$pdf" ] || { echo "no manual at $pdf" >&2; exit 1; }
[ -s "$html" ] || { echo "no HTML page at $html" >&2; exit 1; }

pages="$(pdfinfo "$pdf" | awk '/^Pages:/ { print $2 }')"
echo "$pdf: $pages pages for $# chapters"
text="$(mktemp)"
trap 'rm -f "$text"' EXIT
pdftotext "$pdf" "$text"

previous=0
for chapter in "$@"; do
    title="$(sed -n 's/^# //p' "$chapter" | head -n 1)"
    # The first page after the previous chapter's whose text has the title as a line of its own.
    page="$(awk -v title="$title" -v after="$previous" 'BEGIN { RS = "\f" }
        NR > after { n = split($0, lines, "\n"); for (i = 1; i <= n; i++) if (lines[i] == title) { print NR; exit } }' "$text")"
    if [ -z "$page" ]; then
        echo "chapter \"$title\" ($chapter) does not begin a page after page $previous" >&2
        exit 1
    fi
    grep -qF ">$title<" "$html" || { echo "chapter \"$title\" is missing from $html" >&2; exit 1; }
    echo "page $page: $title"
    previous=$page
done

if grep -o '<img src="[^"]*"' "$html" | grep -v '^<img src="data:' >&2; then
    echo "$html refers to pictures outside itself" >&2
    exit 1
fi
