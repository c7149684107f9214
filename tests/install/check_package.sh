#!/usr/bin/env bash
# Usage: check_package.sh BUILD_DIR
#
# Installed like a desktop program: the .deb that cpack builds declares its libraries, holds the programs, their
# data, the manual, icons, menu entries, software-centre description and file type where the freedesktop conventions
# put them, and its corvalent-tool, unpacked into a throwaway root, seeds a fresh program folder from the data
# installed beside it. A program run from the build tree seeds from the build tree's data instead.
set -euo pipefail
build=$(cd "$1" && pwd)
for program in cpack dpkg-deb dpkg-shlibdeps desktop-file-validate appstreamcli identify; do
    command -v "$program" >/dev/null ||
        { echo "$program is missing (bash scripts/install-deps.sh installs it)" >&2; exit 1; }
done
work="$(mktemp -d "${TMPDIR:-/tmp}/corvalent-package.XXXXXX")"
trap 'rm -rf "$work"' EXIT
export ASAN_OPTIONS=detect_leaks=0

fail() { echo "check_package: $*" >&2; exit 1; }

# corvalent-tool with nothing of the user's: a fresh program folder HOME_DIR, fresh XDG folders.
services_in() {
    local tool=$1 home=$2
    env -i PATH="$PATH" ASAN_OPTIONS="$ASAN_OPTIONS" HOME="$work/user" XDG_DATA_HOME="$work/xdg-data" \
        XDG_CONFIG_HOME="$work/xdg-config" CORVALENT_HOME="$home" "$tool" services
}

# The display names of a Presets folder, sorted: "~" in a file name stands for ".".
shipped_services() {
    for file in "$1"/Presets/*.isf; do basename "$file" .isf; done | tr '~' '.' | sort
}

echo "== from the build tree"
services_in "$build/src/tool/corvalent-tool" "$work/build-home" | sort >"$work/build-services"
diff <(shipped_services "$build/share/corvalent") "$work/build-services" || fail "services differ from the build's"
cmp "$build/share/corvalent/Corvalent_manual.pdf" "$work/build-home/Corvalent_manual.pdf" ||
    fail "the build tree's program folder was not seeded from the build's data"

echo "== cpack -G DEB"
cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/package" >"$work/cpack.log" 2>&1 ||
    { cat "$work/cpack.log" >&2; fail "cpack failed"; }
deb=("$work"/package/*.deb)
[ -f "${deb[0]}" ] || fail "cpack made no .deb"
depends="$(dpkg-deb -f "${deb[0]}" Depends)"
echo "Depends: $depends"
for library in libqt6core6 libqt6widgets6 libqt6dbus6 libqt6sql6 libqt6sql6-sqlite xdg-utils; do
    [[ ", $depends," == *", $library "* || ", $depends," == *", $library,"* ]] || fail "Depends lacks $library"
done

root="$work/root"
dpkg-deb -x "${deb[0]}" "$root"
share="$root/usr/share"
for file in usr/bin/corvalent usr/bin/corvalent-tool usr/bin/corvalent-contacts \
    usr/share/corvalent/Settings.ini usr/share/corvalent/Corvalent_manual.pdf usr/share/corvalent/Corvalent_manual.html \
    usr/share/corvalent-contacts/Phone.fmt usr/share/mime/packages/corvalent-contacts-mime.xml \
    usr/share/icons/hicolor/scalable/apps/corvalent.svg; do
    [ -s "$root/$file" ] || fail "the package lacks /$file"
done
for size in 16 32 48 64 128 256; do
    icon="$share/icons/hicolor/${size}x${size}/apps/corvalent.png"
    [ "$(identify -format %wx%h "$icon" 2>/dev/null)" = "${size}x${size}" ] || fail "$icon is not a ${size}x${size} PNG"
done
desktop-file-validate "$share/applications/org.corvalent.Corvalent.desktop" "$share/applications/corvalent-contacts.desktop"
appstreamcli validate --no-net "$share/metainfo/org.corvalent.Corvalent.metainfo.xml"

echo "== the unpacked corvalent-tool"
# Marked, so that a program folder seeded from anywhere else (the build tree, the source tree) cannot pass.
echo "; unpacked by check_package.sh" >>"$share/corvalent/Settings.ini"
services_in "$root/usr/bin/corvalent-tool" "$work/home" | sort >"$work/services"
cat "$work/services"
[ -s "$work/services" ] || fail "the installed corvalent-tool lists no services"
diff <(shipped_services "$share/corvalent") "$work/services" || fail "services differ from the installed ones"
for file in Settings.ini Corvalent_manual.pdf; do
    cmp "$share/corvalent/$file" "$work/home/$file" || fail "the program folder was not seeded from the installed data"
done
