#!/usr/bin/env bash
# The desktop services of RzSystem under a real Wayland compositor (Weston):
#   1. the clipboard through wl-copy and wl-paste: a fresh compositor has no
#      text; a text copied by a process that has exited since is what
#      `wl-paste` reads, bytes as they are; a text put there by `wl-copy` is
#      what CopyFromClipboard gives; an empty text is still a text;
#   2. the keyboard: Wayland gives no program the state of the keyboard, so
#      no key is down, even with an X server beside the compositor on which a
#      key is held (as XWayland would be); the same tool run for X11 alone
#      sees the key.
#
# Weston runs on its X11 backend, as a window of a private Xvfb: its headless
# backend has no seat, and without a seat (a keyboard that can focus a
# surface) no client can take the selection on a compositor that lacks the
# data-control protocol, as Weston does.
#
# Usage: desktop_wayland.sh PATH-TO-rz_desktop_tool
# Xvfb picks a free display; Weston gets a runtime folder and a socket of its
# own. Both are killed by their process IDs on every way out (and by the
# kernel if this script is killed); every process started here carries a
# marker in its environment, and none may outlive the script. Exits 77
# (skipped) when Xvfb, weston, wl-clipboard or xdotool is missing.
set -u

TOOL=${1:?usage: desktop_wayland.sh PATH-TO-rz_desktop_tool}
[ -x "$TOOL" ] && TOOL=$(cd "$(dirname "$TOOL")" && pwd)/$(basename "$TOOL")
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

for tool in Xvfb weston wl-copy wl-paste xdotool setpriv cmp; do
    command -v "$tool" >/dev/null 2>&1 || skip "$tool is not installed"
done
ls /usr/lib/*/libweston-*/x11-backend.so >/dev/null 2>&1 || skip "Weston's X11 backend is not installed"
[ -x "$TOOL" ] || { say "FAIL: no tool at $TOOL"; exit 1; }

WORK=$(mktemp -d "${TMPDIR:-/tmp}/rz-wayland.XXXXXX")
MARK="RZ_DESKTOP_CHECK=$WORK"
ENV=$(command -v env)
SERVER_PID=
COMPOSITOR_PID=

ours() {  # processes started here, by the marker in their environment
    local f pid
    for f in /proc/[0-9]*/environ; do
        pid=${f#/proc/}
        pid=${pid%/environ}
        tr '\0' '\n' 2>/dev/null <"$f" | grep -qxF "$MARK" && printf '%s ' "$pid"
    done
}

stop() {  # pid: asks it to end, then makes it
    kill -TERM "$1" 2>/dev/null
    for _ in $(seq 1 50); do
        kill -0 "$1" 2>/dev/null || break
        sleep 0.1
    done
    kill -KILL "$1" 2>/dev/null
    wait "$1" 2>/dev/null
}

cleanup() {
    # The compositor first: its clients (the shell, wl-copy's helpers) leave
    # with it.
    [ -n "$COMPOSITOR_PID" ] && stop "$COMPOSITOR_PID"
    [ -n "$SERVER_PID" ] && stop "$SERVER_PID"
    local left=
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
trap 'cleanup; exit $?' EXIT
trap 'exit 130' INT TERM

marked() { "$ENV" "$MARK" "$@"; }
tool() { marked "$TOOL" "$@"; }

setpriv --pdeathsig KILL "$ENV" "$MARK" Xvfb -displayfd 3 -nolisten tcp -noreset \
    -screen 0 640x480x24 3>"$WORK/display" 2>"$WORK/xvfb.log" &
SERVER_PID=$!
for _ in $(seq 1 100); do
    [ -s "$WORK/display" ] && break
    kill -0 "$SERVER_PID" 2>/dev/null || break
    sleep 0.1
done
[ -s "$WORK/display" ] || { tail -n 20 "$WORK/xvfb.log"; fail "Xvfb did not start"; exit 1; }
X_DISPLAY=":$(tr -dc 0-9 <"$WORK/display")"

export XDG_RUNTIME_DIR=$WORK/runtime
mkdir -m 700 "$XDG_RUNTIME_DIR"
SOCKET=rz-check
DISPLAY=$X_DISPLAY setpriv --pdeathsig KILL "$ENV" "$MARK" weston --backend=x11-backend.so \
    --socket="$SOCKET" --no-config --idle-time=0 --width=320 --height=240 \
    >"$WORK/weston.log" 2>&1 &
COMPOSITOR_PID=$!
# Ready once a client can connect.
for _ in $(seq 1 100); do
    if [ -S "$XDG_RUNTIME_DIR/$SOCKET" ]; then
        WAYLAND_DISPLAY=$SOCKET timeout 5 wl-paste --list-types 2>&1 >/dev/null |
            grep -q "Failed to connect" || break
    fi
    kill -0 "$COMPOSITOR_PID" 2>/dev/null || break
    sleep 0.1
done
[ -S "$XDG_RUNTIME_DIR/$SOCKET" ] || { tail -n 20 "$WORK/weston.log"; fail "weston did not start"; exit 1; }
export WAYLAND_DISPLAY=$SOCKET
unset DISPLAY
say "Weston on $WAYLAND_DISPLAY, inside Xvfb on $X_DISPLAY"

# --- 1. The clipboard ---------------------------------------------------------------

check "a fresh compositor offers no text" "$(tool has)" none
tool paste "$WORK/fresh"
check "and pastes nothing" "$(stat -c %s "$WORK/fresh")" 0

printf 'one\0two\n\377 $(touch %s/pwned) *' "$WORK" >"$WORK/mixed"
tool copy "$WORK/mixed"
marked timeout 10 wl-paste --no-newline >"$WORK/mixed.out" 2>/dev/null
if cmp -s "$WORK/mixed" "$WORK/mixed.out"; then
    pass "a text copied by a process that has exited is read by wl-paste, bytes as they are"
else
    fail "wl-paste reads $(od -An -c "$WORK/mixed.out" | head -c 200)"
fi
[ -e "$WORK/pwned" ] && fail "a shell read the text"
check "the copied text is offered" "$(tool has)" text

printf 'from wl-copy\0\n\t\200' >"$WORK/wl.in"
marked timeout 10 wl-copy <"$WORK/wl.in" 2>/dev/null
tool paste "$WORK/wl.out"
if cmp -s "$WORK/wl.in" "$WORK/wl.out"; then
    pass "a text put there by wl-copy is what CopyFromClipboard gives"
else
    fail "CopyFromClipboard gives $(od -An -c "$WORK/wl.out" | head -c 200)"
fi

: >"$WORK/empty"
tool copy "$WORK/empty"
tool paste "$WORK/empty.out"
check "an empty text is a text, and pastes as nothing" \
    "$(tool has) $(stat -c %s "$WORK/empty.out")" "text 0"

# --- 2. The keyboard -----------------------------------------------------------

DISPLAY=$X_DISPLAY marked xdotool keydown Shift_L
check "under Wayland no key is down" \
    "$(DISPLAY=$X_DISPLAY tool native) $(DISPLAY=$X_DISPLAY tool test 3 0) $(tool test 0 0)" \
    "-1 up down"
check "while X alone sees the key" "$(DISPLAY=$X_DISPLAY WAYLAND_DISPLAY= tool native)" 56
DISPLAY=$X_DISPLAY marked xdotool keyup Shift_L
