#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# wheel_test.sh SOURCE BUILD PYTHON: makes the wheel without a network, installs it into an empty folder, and runs
# the documents there.
set -euo pipefail
source=$1 build=$2 python=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=${HOME:-$work} PIP_NO_INDEX=1 PIP_DISABLE_PIP_VERSION_CHECK=1 PYTHONDONTWRITEBYTECODE=1
unset TAVRIX_LIBRARY

export TAVRIX_BUILD=$build-wheel
"$python" -m pip wheel "$source" --no-build-isolation --no-deps -w "$work" >"$work/log" 2>&1 ||
    { tail -n 100 "$work/log"; exit 1; }
"$python" -m pip install -q --no-deps --target "$work/site" "$work"/tavrix-*-linux_*.whl

ln -s "$source/samples" "$work/samples"
cd "$work"
export PYTHONPATH=$work/site
"$python" -c 'import tavrix; print(tavrix.__version__, tavrix._native.library._name)' | grep "^1.0.0 $work/site/tavrix/"
"$python" "$source/tests/python/documents.py" "$source/docs/python.md"
