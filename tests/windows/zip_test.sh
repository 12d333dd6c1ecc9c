#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# zip_test.sh BUILD CC [COMMAND...]: packs the .zip for Windows hosts and looks into it; compiles its headers as
# Microsoft's compiler does, builds its example against both import libraries, and runs that where the command
# runs Windows programs.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")") build=$1 cc=$2
run=("${@:3}")
machine=$("$cc" -dumpmachine)
tool=${machine%%-*}-w64-mingw32
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cpack --config "$build/CPackConfig.cmake" -B "$work" -G ZIP >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
cd "$work"
sha256sum --check --quiet ./*.sha256
cmake -E tar xf tavrix-*-win??.zip
[ ! -e tavrix-*/bin/Tavrix.debug ]
cmake -E tar xf tavrix-*-debug.zip
cd tavrix-*/
documents=$(grep -oE '\]\([^):]+\.(md|jpg|png|h)\)' README.md | tr -d ']()' | grep -v automatic.h)
for file in bin/Tavrix.dll include/tavrix/component_store.hpp lib/libTavrix.dll.a lib/Tavrix.lib samples/binarize.c \
    LICENSE README.md $documents; do
    [ -s "$file" ] || { echo "missing: $file"; find . -type f; exit 1; }
done
"$tool-objdump" -t bin/Tavrix.dll | grep -q 'no symbols'
"$tool-objdump" -h bin/Tavrix.dll | grep -q gnu_debuglink
"$tool-objdump" -h bin/Tavrix.debug | grep -q debug_info

# runs PROGRAM: it prints the sample's stripes.
runs() {
    [ ${#run[@]} -eq 0 ] && return
    [ "$("${run[@]}" bin "$1" | tr -d '\r' | sort -u)" = '####....####....####....####....' ]
}
"$cc" -std=c99 -Wall -Wextra -Werror samples/binarize.c -Iinclude -Llib -lTavrix -o bin/binarize.exe
runs binarize.exe

compile=(clang "--target=${machine%%-*}-pc-windows-msvc" -nostdlibinc -isystem "$here/microsoft" -Iinclude
    -Wall -Wextra -Werror)
for language in c:c11 c++:c++14 c++:c++17; do
    echo '#include <tavrix/tavrix.h>' | "${compile[@]}" -x ${language%:*} -std=${language#*:} -fsyntax-only -
done
echo '#include <tavrix/component_store.hpp>
void Walk(tavrix::host::Store store) { for (ComponentNode& block : store.blocks()) block.kind = 0; }' >walk.cpp
"${compile[@]}" -std=c++17 -fsyntax-only walk.cpp
"${compile[@]}" -std=c++14 -fsyntax-only walk.cpp 2>errors && exit 1
grep -q 'component_store.hpp needs C++17' errors

# What the sample takes of the system, as import libraries of Microsoft's kind.
printf 'LIBRARY msvcrt.dll\nEXPORTS\nputchar\nputs\nmemcpy\nmemset\n' >msvcrt.def
printf 'LIBRARY kernel32.dll\nEXPORTS\n' >kernel32.def
for function in GlobalAlloc@8 GlobalFree@4 GlobalHandle@4 GlobalLock@4 GlobalUnlock@4 ExitProcess@4; do
    [ "${machine%%-*}" = i686 ] || function=${function%@*}
    echo "$function" >>kernel32.def
done
for library in msvcrt kernel32; do
    llvm-dlltool -k -m "$([ "${machine%%-*}" = i686 ] && echo i386 || echo i386:x86-64)" -d $library.def -l $library.lib
done
for source in samples/binarize.c "$here/microsoft/start.c"; do "${compile[@]}" -std=c11 -O1 -c "$source"; done
lld-link /nologo /subsystem:console /entry:mainCRTStartup /safeseh:no /nodefaultlib /out:bin/microsoft.exe \
    binarize.o start.o lib/Tavrix.lib msvcrt.lib kernel32.lib
runs microsoft.exe
[ ${#run[@]} -gt 0 ] && echo packed, linked and run || echo packed and linked: nothing here runs Windows programs
