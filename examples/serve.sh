#!/usr/bin/env bash
# A serving device from start to stop: send lines, read the trace (also following it), stop it
# with SIGTERM, and find the run folder gone. Usage: serve.sh ZEL_DEVICE
set -uo pipefail
device=$1
work=$(mktemp -d)
run="$work/run"
trap 'kill -KILL "${server:-0}" "${follower:-0}" 2>/dev/null; [ -n "${KEEP:-}" ] || rm -rf "$work"' EXIT
fail() { echo "serve.sh: $*"; exit 1; }

mkfifo "$work/out"
"$device" serve --dir "$run" >"$work/out" 2>"$work/serve.err" &
server=$!
exec 3<"$work/out"
# The device says so once it answers.
read -r ready <&3 || fail "the device did not start: $(cat "$work/serve.err")"
[ "$ready" = "zel_device: serving in $run" ] || fail "unexpected first line: $ready"

"$device" trace --dir "$run" -f >"$work/follow.jsonl" &
follower=$!

"$device" send --dir "$run" 'pkg.install com.game.a game' 'register com.game.a cb1' >"$work/send.out" 2>&1
status=$?
[ "$status" -eq 0 ] || fail "send exited $status: $(cat "$work/send.out")"
grep -q '"ev":"ipc.done","line":2,"code":3,"status":0' "$work/send.out" || fail "no ipc.done for the register: $(cat "$work/send.out")"

"$device" send --dir "$run" 'nonsense' '+5 scene com.a X 1' >"$work/bad.out" 2>&1
status=$?
[ "$status" -eq 2 ] || fail "bad lines exited $status"
grep -q "^line 1: unknown command 'nonsense'" "$work/bad.out" || fail "no error for line 1: $(cat "$work/bad.out")"
grep -q '^line 2: a sent line takes no TIME' "$work/bad.out" || fail "no error for line 2: $(cat "$work/bad.out")"

printf 'scene com.a BACK_APP_ANIMATION 0\nexpect ipc.done code=0 status=0\n' | "$device" send --dir "$run" >"$work/stdin.out" 2>&1
status=$?
[ "$status" -eq 0 ] || fail "lines from stdin exited $status: $(cat "$work/stdin.out")"

"$device" trace --dir "$run" >"$work/trace.jsonl" || fail "trace failed"
grep -q '"ev":"ipc.done","line":3,"code":0' "$work/trace.jsonl" || fail "the trace lacks the scene's ipc.done"

kill -TERM "$server"
wait "$server"
status=$?
[ "$status" -eq 0 ] || fail "the device exited $status after SIGTERM: $(cat "$work/serve.err")"
wait "$follower" || fail "trace -f did not end cleanly with the device"
cmp -s "$work/trace.jsonl" <(head -n "$(wc -l <"$work/trace.jsonl")" "$work/follow.jsonl") ||
    fail "trace -f did not see what trace saw"
[ ! -e "$run" ] || fail "the run folder is still there"
echo "serve: started, driven, traced, stopped; run folder removed"
