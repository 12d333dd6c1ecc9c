#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# install_test.sh SOURCE BUILD: installs into an empty folder and builds a stranger's C and C++ programs
# against it, once as a CMake package and once with pkg-config.
set -euo pipefail
source=$1 build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
expected='####....####....####....####....'

# The README shows the sample as it is compiled here.
diff <(sed -n '/^```c$/,/^```$/p' "$source/README.md" | sed '1d;$d') <(sed -n '/^#include/,$p' "$source/samples/binarize.c")

cmake --install "$build" --prefix "$work/root" >"$work/log"
libdir=$(dirname "$(find "$work/root" -name 'libtavrix.so.1')")

cmake -S "$source/tests/install/stranger" -B "$work/stranger" -DCMAKE_PREFIX_PATH="$work/root" \
    -DEXAMPLE="$source/samples/binarize.c" >>"$work/log"
cmake --build "$work/stranger" >>"$work/log"

export PKG_CONFIG_PATH=$libdir/pkgconfig
read -ra flags <<<"$(pkg-config --cflags --libs tavrix)"
${CC:-cc} -std=c99 -Wall -Wextra -Wpedantic -Werror "$source/samples/binarize.c" "${flags[@]}" -o "$work/c_host"
${CXX:-c++} -std=c++17 -Wall -Wextra -Wpedantic -Werror "$source/tests/install/stranger/components.cpp" \
    "${flags[@]}" -o "$work/cpp_host"

export LD_LIBRARY_PATH=$libdir
for folder in "$work/stranger" "$work"; do
    [ "$("$folder/c_host" | sort -u)" = "$expected" ] || { echo "$folder/c_host printed something else"; exit 1; }
    [ "$("$folder/cpp_host")" = '1 component' ]
done

unset LD_LIBRARY_PATH

# The README's Python prints what it says, in the checkout (with what is built) and once installed.
run_readme() {
    (cd "$source" && PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=$1 TAVRIX_LIBRARY=$2 \
        /usr/bin/python3 tests/python/documents.py README.md)
}
run_readme python "$(find "$build/src" -name libtavrix.so)"
run_readme "$(dirname "$(dirname "$(find "$work/root" -path '*/tavrix/__init__.py')")")" ''

if [ -x "$work/root/bin/tavrix" ]; then
    "$work/root/bin/tavrix" --version | grep -q 1.0.0
    "$work/root/bin/tavrix" scan "$source/samples/card-gray.png" -o "$work/card.tif"
    [ -s "$work/root/share/man/man1/tavrix.1.gz" ]
    bash -n "$work/root/share/bash-completion/completions/tavrix"
fi
echo installed, linked and ran
