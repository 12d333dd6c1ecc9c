# SPDX-License-Identifier: MIT
# Completion of the tavrix command for bash.
_tavrix() {
    local word=${COMP_WORDS[COMP_CWORD]} last=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]} choices
    local files='-r --recursive --files-from -0 --null --keep-tree -j --jobs --max-pixels -q --quiet --skip-existing --force -h --help'
    local pictures='-o --output --name --format'
    local findings='-m --mode -v --verbose --scale --json --json-out --overlay --overlay-format'
    local clean='-m --mode -v --verbose --scale --dpi --despeckle'
    COMPREPLY=()
    case $last in
        -m | --mode) choices=$(tavrix modes 2>/dev/null | awk '/^[-0-9]/ { print $2 }') ;;
        --format | --overlay-format) choices='tif pdf png bmp pbm pgm ppm pnm jpg' ;;
        --scale) choices='1 2 3 auto' ;;
        --op) choices='edge open close smooth sharpen dilate' ;;
        --code) choices='none right half left flip mirror-left' ;;
        --group) choices='text aligned' ;;
        *) ;;
    esac
    if [[ -z $choices && $COMP_CWORD -eq 1 ]]; then
        choices='scan binarize compare card components lines trueline logo rotate turn pad morph modes --help --version'
    elif [[ -z $choices && $word == -* ]]; then
        case $command in
            scan) choices="$files $pictures $clean --no-straighten --no-crop" ;;
            binarize) choices="$files $pictures $clean --straighten --crop --blocks" ;;
            compare) choices="$files -o --output" ;;
            card) choices="$files $pictures $findings --join-pieces --split-wide" ;;
            components) choices="$files $pictures $findings --grow --noise --line-noise --group" ;;
            lines) choices="$files $pictures $findings --join-pieces --split-wide --from-left" ;;
            trueline) choices="$files $pictures $findings --join-pieces --split-wide" ;;
            logo) choices="$files $pictures $findings" ;;
            rotate) choices="$files $pictures -a --angle -c --counter-clockwise" ;;
            turn) choices="$files $pictures -m --mode -v --verbose -b --block --code" ;;
            pad) choices="$files $pictures -m --mode -v --verbose" ;;
            morph) choices="$files $pictures -m --mode -v --verbose --op" ;;
            *) choices='-h --help' ;;
        esac
    fi
    if [[ -n $choices ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$word")
    else
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    fi
}
complete -F _tavrix tavrix
