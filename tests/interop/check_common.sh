# Shared by the interoperability checks: results, and the end of a check.
# A script that sources this defines ours() (the process IDs it started that
# are still there, by a mark of its own) and WORK (its temporary folder).
SKIP=77
PASSED=0
FAILED=0

say() { printf '%s\n' "$*"; }
pass() { say "PASS: $*"; PASSED=$((PASSED + 1)); }
fail() { say "FAIL: $*"; FAILED=$((FAILED + 1)); }
skip() { say "SKIP: $*"; exit "$SKIP"; }
check() {  # what got want
    if [ "$2" = "$3" ]; then pass "$1"; else fail "$1 (got '$2', want '$3')"; fi
}

# Once the servers are stopped: waits up to 5 s for whatever they started to
# leave, fails for (and kills) what stays, removes WORK and reports. Its
# status is the check's.
finish_check() {
    local left= pid
    for _ in $(seq 1 50); do
        left=$(ours)
        [ -z "$left" ] && break
        sleep 0.1
    done
    if [ -n "$left" ]; then
        say "FAIL: processes left behind: $left"
        for pid in $left; do kill -KILL "$pid" 2>/dev/null; done
        FAILED=$((FAILED + 1))
    fi
    rm -rf "$WORK"
    say "$PASSED passed, $FAILED failed"
    [ "$FAILED" = 0 ]
}
