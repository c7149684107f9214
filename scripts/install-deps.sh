#!/usr/bin/env bash
# Installs the Debian packages that building, running and testing need.
# Safe to run twice: apt-get skips what is already there.
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config
    qt6-base-dev libqt6sql6-sqlite libsqlite3-dev
    libxkbcommon-dev
    libbenchmark-dev
    libcurl4-openssl-dev python3-pyftpdlib
    xdg-utils shared-mime-info desktop-file-utils
    libxcb1-dev libxcb-ewmh-dev libxcb-icccm4-dev libxcb-xtest0-dev libxcb-keysyms1-dev
    xvfb xauth openbox dbus x11-utils xdotool imagemagick
    poppler-utils appstream dpkg-dev librsvg2-bin
    firefox-esr
    clang-16 libclang-rt-16-dev
)

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ ${#missing[@]} -eq 0 ]; then
    echo "install-deps: everything is installed"
    exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
echo "install-deps: installing ${missing[*]}"
$SUDO apt-get update -q
DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -q --no-install-recommends "${missing[@]}"
