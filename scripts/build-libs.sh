#!/usr/bin/env bash
# build-libs.sh [--prefix] TARGET: makes the third-party libraries of TARGET, windows, windows-gui or
# tsan, unless they are there, and prints the folder they are in; with --prefix it only prints. The
# folder's name carries a hash of the recipe, so that another recipe has another folder.
set -euo pipefail
. "$(dirname "$0")/common.sh"

only_prefix=false
if [ "${1-}" = --prefix ]; then
    only_prefix=true
    shift
fi
recipe=$root/scripts/libs/${1-}.sh
parts=("$recipe")
case ${1-} in
    windows | tsan) target=$1 ;;
    windows-gui) target=$1 parts+=("$root/scripts/libs/windows.sh") ;;
    *) say "usage: build-libs.sh [--prefix] windows|windows-gui|tsan"; exit 2 ;;
esac

hash=$(cat "${parts[@]}" "$root/scripts/libs/common.sh" "$root/cmake/toolchain-windows.cmake" \
    | sha256sum | cut -c 1-12)
folder=$cache/$target-$hash
prefix=$folder/prefix
if $only_prefix || [ -e "$folder/complete" ]; then
    echo "$prefix"
    exit
fi

mkdir -p "$cache"
exec 9> "$folder.lock"
if ! flock --nonblock 9; then
    say "Waiting for another build of the libraries for $target ..."
    flock 9
fi
# Only a finished build has the stamp; anything else is the rest of a broken-off one.
if [ ! -e "$folder/complete" ]; then
    say "Building the third-party libraries for $target, once, in $folder"
    rm -rf "$folder"
    work=$folder/work
    log=$folder/log
    mkdir -p "$work" "$prefix"
    : > "$log"
    . "$root/scripts/libs/common.sh"
    . "$recipe"
    buildTarget
    rm -rf "$work"
    touch "$folder/complete"
fi
echo "$prefix"
