#!/bin/sh
# check_config.sh ZEL_DEVICE GOOD_CONFIG BROKEN_CONFIG
# The good configuration loads (exit 0), passes the schema, and nothing in it is ignored or
# rejected; the broken one does not load (exit 2) and says why.
set -u
tool=$1 good=$2 broken=$3

out=$("$tool" check-config "$good")
status=$?
printf '%s\n' "$out"
[ "$status" -eq 0 ] || { echo "check_config: $good: exit $status, expected 0"; exit 1; }
printf '%s\n' "$out" | grep -qx -- '-: schema: valid' || { echo "check_config: $good: not valid"; exit 1; }
printf '%s\n' "$out" | grep -qx -- '-: result: the service loads this file' || { echo "check_config: no result"; exit 1; }
if printf '%s\n' "$out" | grep -E -- '^[0-9-]+: (ignored|rejected|xml|schema: [^v])'; then
    echo "check_config: $good: findings above"
    exit 1
fi

out=$("$tool" check-config "$broken")
status=$?
printf '%s\n' "$out"
[ "$status" -eq 2 ] || { echo "check_config: $broken: exit $status, expected 2"; exit 1; }
printf '%s\n' "$out" | grep -qx -- '-: rejected: not well-formed XML (the service logs "\[ZelConfig\] load xml error!")' ||
    { echo "check_config: $broken: no reason given"; exit 1; }
echo "check_config: ok"
