#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# parallel_test.sh SOURCE TAVRIX: GNU parallel over two hosts, which are this one behind a stand-in for ssh.
source "$(dirname "$0")/scaling.sh"
trap 'rm -rf "$work"' EXIT
make_scans

printf '#!/bin/sh\nshift\n[ "$1" != -- ] || shift\nexec sh -c "$*"\n' >"$work/ssh-here"
chmod +x "$work/ssh-here"
printf '1/%s one\n1/%s two\n' "$work/ssh-here" "$work/ssh-here" >"$work/hosts.txt"
recipe 'GNU parallel' >"$work/recipe.sh"

cd "$work"
export SHELL=/bin/sh  # what it quotes for; a bare environment leaves it to guess
HOME=$work setsid bash recipe.sh >first.log 2>&1 &
wait_for_outputs
kill -TERM -- "-$!"
wait $! 2>/dev/null || true
[ "$(count)" -lt "$count_all" ] || { echo 'it was done before it was interrupted'; exit 1; }

HOME=$work bash recipe.sh >second.log 2>&1 && { echo 'the damaged picture went unnoticed'; exit 1; }
grep -q 'scans/b/bad.jpg: JPEG' second.log
check_all_done
