#!/usr/bin/env bash
# Plays each scenario on the real clock twice, in one process and in real processes, and fails
# when the device in real processes fails one the other passes. Usage: processes.sh ZEL_DEVICE SCENARIO...
set -uo pipefail
device=$1
shift
failed=0 passed=0 both=0
for scenario in "$@"; do
    "$device" run "$scenario" --realtime --quiet >/dev/null 2>&1
    alone=$?
    "$device" run "$scenario" --realtime --processes --quiet >/dev/null 2>/tmp/processes.$$.err
    split=$?
    if [ "$alone" -eq 0 ] && [ "$split" -ne 0 ]; then
        echo "$scenario: exit $split in real processes, 0 in one"
        sed 's/^/    /' /tmp/processes.$$.err | head -20
        failed=$((failed + 1))
    elif [ "$split" -eq 0 ]; then
        passed=$((passed + 1))
    else
        both=$((both + 1))
        echo "$scenario: exit $alone in one process, $split in real processes (not on the real clock in either)"
    fi
done
rm -f /tmp/processes.$$.err
echo "$passed passed in real processes, $failed failed there only, $both fail on the real clock in both"
[ "$failed" -eq 0 ]
