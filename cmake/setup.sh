# SPDX-License-Identifier: MIT
# Sourced by ./demo, ./check and .ci/run: installs missing Debian packages and runs steps quietly.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

log=$(mktemp)
trap 'rm -f "$log"' EXIT

# step "what it does" command...: prints that and the seconds it took; when the command fails, its last output.
step() {
    local name=$1 start=$SECONDS
    shift
    printf '%s ...' "$name"
    if "$@" >"$log" 2>&1; then
        printf ' %d s\n' $((SECONDS - start))
    else
        printf '\n'
        tail -n 100 "$log" >&2
        printf 'failed: %s\n' "$name" >&2
        exit 1
    fi
}

# install_packages file...: the packages that the files list, one a line, as far as they are missing. A second
# word on a line is a program that makes the package unnecessary.
install_packages() {
    local missing=() package
    while read -r package program; do
        case $package in '' | '#'*) continue ;; esac
        [ -z "$program" ] || ! command -v "$program" >/dev/null || continue
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done < <(cat "$@")
    [ ${#missing[@]} -eq 0 ] && return
    local root=()
    [ "$(id -u)" -eq 0 ] || root=(sudo)
    step 'Updating package lists' "${root[@]}" apt-get update -q
    step "Installing ${missing[*]}" \
        "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -qy --no-install-recommends "${missing[@]}"
}

# build preset [option...]: configures and builds.
build() {
    local preset=$1
    shift
    step "Configuring $preset" cmake --preset "$preset" "$@"
    step "Building $preset" cmake --build "build/$preset" -j "$(nproc)"
}
