#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# deb_test.sh BUILD: builds the Debian package, has lintian check it, installs it into an empty root, runs the command there and
# removes the package again.
set -euo pipefail
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cpack --config "$build/CPackConfig.cmake" -B "$work" -G DEB >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
deb=$(ls "$work"/*.deb)

# What it depends on must be installable: every name is known to this system's package lists.
for name in $(dpkg-deb -f "$deb" Depends | sed 's/([^)]*)//g; s/:any//g; s/,/ /g; s/|/ /g'); do
    dpkg-query -W "$name" >/dev/null
done

if [ -x "$(command -v lintian)" ]; then
    lintian --allow-root --fail-on error "$deb" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
else
    echo 'lintian is not here: the package is not checked'
fi

root=$work/root
mkdir -p "$root/var/lib/dpkg"/{info,updates} "$root/var/log"
: >"$root/var/lib/dpkg/status"
in_root() {
    dpkg --root="$root" --log="$work/dpkg.log" --force-not-root --force-depends --force-script-chrootless \
        --force-bad-path "$@" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
}
in_root -i "$deb"
"$root/usr/bin/tavrix" --version | grep -q 1.0.0
"$root/usr/bin/tavrix" scan "${0%/*}/../../samples/card-gray.png" -o "$work/card.tif"
in_root -r tavrix
in_root --purge tavrix
left=$(find "$root/usr" -type f -o -type l 2>/dev/null || true)
[ -z "$left" ] || { printf 'left behind:\n%s\n' "$left"; exit 1; }
echo installed, ran and removed
