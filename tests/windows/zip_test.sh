#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# zip_test.sh BUILD CC [RUN32]: packs the .zip for Windows hosts, builds its example against what it holds,
# and runs that where 32-bit Windows programs run.
set -euo pipefail
build=$1 cc=$2 run32=${3:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cpack --config "$build/CPackConfig.cmake" -B "$work" -G ZIP >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
cd "$work"
cmake -E tar xf ./*.zip
cd tavrix-*/
for file in bin/Tavrix.dll include/tavrix/tavrix.h include/tavrix/component_store.hpp lib/libTavrix.dll.a \
    binarize.c LICENSE README.md; do
    [ -s "$file" ] || { echo "missing: $file"; find . -type f; exit 1; }
done
"$cc" -std=c99 -Wall -Wextra -Werror binarize.c -Iinclude -Llib -lTavrix -o bin/binarize.exe
if [ -n "$run32" ]; then
    [ "$("$run32" bin binarize.exe | tr -d '\r' | sort -u)" = '####....####....####....####....' ]
fi
echo packed and linked
