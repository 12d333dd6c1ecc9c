#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run64.sh USER32.dll [-t SECONDS] [-d DIR] FOLDER PROGRAM.exe ARGUMENTS: runs a 64-bit Windows program in FOLDER
# with wine64, DIR as drive d:, and user32.dll replaced by the stand-in that writes message boxes to standard
# error. Every run has a system of its own, without the services and windows that a whole one starts.
set -euo pipefail
user32=$1 seconds=120 drive=
shift
while [[ $1 == -* ]]; do
    case $1 in
        -t) seconds=$2 ;;
        -d) drive=$(readlink -f "$2") ;;
    esac
    shift 2
done
folder=$1
shift
prefix=$(mktemp -d)
export WINEPREFIX=$prefix WINEARCH=win64 WINEBOOTSTRAPMODE=1 WINEDEBUG=-all
export WINEDLLOVERRIDES="user32=n;mscoree,mshtml=" LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY XDG_RUNTIME_DIR
clean() {
    /usr/lib/wine/wineserver -k || true
    rm -rf "/tmp/.wine-$(id -u)/server-$(printf '%x-%x' $(stat -c '%d %i' "$prefix"))" "$prefix"
}
trap clean EXIT
mkdir -p "$prefix/dosdevices" "$prefix/drive_c/windows/system32" "$prefix/drive_c/windows/temp"
ln -s ../drive_c "$prefix/dosdevices/c:"
ln -s / "$prefix/dosdevices/z:"
[ -z "$drive" ] || ln -s "$drive" "$prefix/dosdevices/d:"
cp "$user32" "$prefix/drive_c/windows/system32/user32.dll"
echo disable >"$prefix/.update-timestamp"
printf 'WINE REGISTRY Version 2\n\n#arch=win64\n\n' | tee "$prefix/system.reg" >"$prefix/user.reg"
cd "$folder"
timeout -k 5 "$seconds" /usr/lib/wine/wine64 "$@" </dev/null
