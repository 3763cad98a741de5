#!/usr/bin/env bash
# Plays each scenario on the device in one process and on the device in real processes.
#  - In virtual time (the default) both must end with the same status and write the same trace,
#    byte for byte.
#  - With --realtime, fails only where the device in real processes fails a scenario the other
#    passes: scenarios that expect things at exact delay boundaries are written for virtual time.
# Usage: processes.sh ZEL_DEVICE [--realtime] SCENARIO...
set -uo pipefail
device=$1
shift
clock=
if [ "${1:-}" = --realtime ]; then
    clock=--realtime
    shift
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0 passed=0 both=0
for scenario in "$@"; do
    "$device" run "$scenario" $clock --quiet --trace "$work/one.jsonl" >/dev/null 2>"$work/one.err"
    alone=$?
    "$device" run "$scenario" $clock --processes --quiet --trace "$work/split.jsonl" >/dev/null 2>"$work/split.err"
    split=$?
    if [ -z "$clock" ] && { [ "$alone" -ne "$split" ] || ! cmp -s "$work/one.jsonl" "$work/split.jsonl"; }; then
        echo "$scenario: exit $alone in one process, $split in real processes; traces:"
        diff "$work/one.jsonl" "$work/split.jsonl" | head -20
        sed 's/^/    /' "$work/split.err" | head -20
        failed=$((failed + 1))
    elif [ -n "$clock" ] && [ "$alone" -eq 0 ] && [ "$split" -ne 0 ]; then
        echo "$scenario: exit $split in real processes, 0 in one"
        sed 's/^/    /' "$work/split.err" | head -20
        failed=$((failed + 1))
    elif [ -z "$clock" ] || [ "$split" -eq 0 ]; then
        passed=$((passed + 1))
    else
        both=$((both + 1))
        echo "$scenario: exit $alone in one process, $split in real processes (on the real clock)"
    fi
done
echo "$passed passed in real processes, $failed failed there only, $both fail on the real clock in both"
[ "$failed" -eq 0 ]
