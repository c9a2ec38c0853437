# shellcheck shell=bash
# What every script of the tree needs: the places, the messages, the steps.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cache=${PAVO_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/pavo}
jobs=$(nproc)

say() { printf '%s\n' "$*" >&2; }
die() { say "$(basename "$0"): $*"; exit 1; }

# steps N: N calls of `step` follow; step TITLE COMMAND...: runs one of them with its output in
# $log, says how far it is while it lasts, and ends the script with the log's end if it fails.
steps() { steps_all=$1 steps_done=0; }
step() {
    local title=$1 begin=$SECONDS ticker
    shift
    steps_done=$((steps_done + 1))
    say "[$steps_done/$steps_all] $title ..."
    # Lines of compiler output are the only measure that every build system here has in common.
    local from
    from=$(wc -l < "$log")
    # A wait without a process of its own: one would outlive the ticker and keep our output open.
    while ! read -rt 30 <> <(:); do
        say "      $title: $((SECONDS - begin)) s, $(($(wc -l < "$log") - from)) lines of output"
    done &
    ticker=$!
    # In a subshell of its own, so that `set -e` counts inside COMMAND although its result is asked.
    set +e
    (set -e; "$@") >> "$log" 2>&1
    local result=$?
    set -e
    kill "$ticker" && wait "$ticker" 2> /dev/null || true
    if [ "$result" != 0 ]; then
        tail -n 40 "$log" >&2
        die "$title failed; all of its output is in $log"
    fi
    say "[$steps_done/$steps_all] $title: $((SECONDS - begin)) s"
}
