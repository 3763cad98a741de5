#!/usr/bin/env bash
# Plays every scenario RUNS times, JOBS runs at once, and checks that each scenario's traces (and
# exit statuses) are the same byte for byte. With --processes every emulated process is a real one.
# Usage: determinism.sh ZEL_DEVICE RUNS JOBS [--processes] SCENARIO...
set -uo pipefail
device=$1 runs=$2 jobs=$3
shift 3
mode=
if [ "${1:-}" = --processes ]; then
    mode=--processes
    shift
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

play() {  # SCENARIO_INDEX RUN
    local scenario
    scenario=$(cat "$work/$1.path")
    "$device" run "$scenario" $mode --quiet --trace "$work/$1.$2.jsonl" >/dev/null 2>"$work/$1.$2.err"
    echo $? >"$work/$1.$2.status"
}
export -f play
scenarios=("$@")
export device work mode
# Paths go by file, so that any character in them survives the trip through xargs.
for i in "${!scenarios[@]}"; do printf '%s' "${scenarios[$i]}" >"$work/$i.path"; done

for i in "${!scenarios[@]}"; do
    for r in $(seq 1 "$runs"); do echo "$i $r"; done
done | xargs -P "$jobs" -n 2 bash -c 'play "$0" "$1"'

failed=0
for i in "${!scenarios[@]}"; do
    for r in $(seq 2 "$runs"); do
        if ! cmp -s "$work/$i.1.jsonl" "$work/$i.$r.jsonl" || ! cmp -s "$work/$i.1.status" "$work/$i.$r.status"; then
            echo "${scenarios[$i]}: run $r differs from run 1 (status $(cat "$work/$i.1.status") vs $(cat "$work/$i.$r.status"))"
            diff "$work/$i.1.jsonl" "$work/$i.$r.jsonl" | head -n 10
            failed=1
            break
        fi
    done
done
[ "$failed" -eq 0 ] && echo "${#scenarios[@]} scenarios x $runs runs: every trace the same"
exit "$failed"
