# SPDX-License-Identifier: MIT
# Sourced by the tests of docs/scaling.md. They run the recipes as they are printed there, on pictures with
# equal names in two folders and a damaged one, interrupt them, and run them again.
set -euo pipefail
source_dir=$1 tavrix=$2
work=$(mktemp -d)
count_all=220  # good pictures: more than a batch of either recipe
export PATH=${tavrix%/*}:$PATH

# Prints the code of a document's section.
recipe() { sed -n "/^## $1/,/^## /p" "$source_dir/docs/scaling.md" | sed -n '/^```sh$/,/^```$/p' | sed '1d;$d'; }

make_scans() {
    mkdir -p "$work"/scans/{a,b}
    cp "$source_dir/samples/card-colour.jpg" "$work/scans/a/card.jpg"
    "$tavrix" rotate -a 180 "$work/scans/a/card.jpg" --format jpg -o - >"$work/scans/b/card.jpg"
    for i in $(seq "$((count_all - 2))"); do ln "$work/scans/a/card.jpg" "$work/scans/a/card-$i.jpg"; done
    head -c 100000 "$work/scans/a/card.jpg" >"$work/scans/b/bad.jpg"
    (cd "$work" && "$tavrix" binarize -q -r scans -o expected/ 2>/dev/null) || true
    [ "$(find "$work/expected" -type f | wc -l)" -eq "$count_all" ]
}

count() { find "$work/clean" -name '*.tif' 2>/dev/null | wc -l; }

# Waits until the first outputs are there, for at most five minutes.
wait_for_outputs() {
    for _ in $(seq 15000); do
        [ "$(count)" -lt 3 ] || return 0
        sleep 0.02
    done
    echo 'no outputs came; the recipe said:'
    tail -c 2000 "$work/first.log"
    exit 1
}

# Every picture but the damaged one, each from its own input, and nothing else.
check_all_done() { diff -rq "$work/expected" "$work/clean" && echo "all $(count) done"; }
