#!/usr/bin/env bash
# The desktop services of RzSystem under a real Wayland compositor (Weston):
#   1. the clipboard through wl-copy and wl-paste: a fresh compositor has no
#      text; a text copied by a process that has exited since is what
#      `wl-paste` reads, bytes as they are; a text put there by `wl-copy` is
#      what CopyFromClipboard gives; an empty text is still a text;
#   2. Wayland gives no program the state of the keyboard, so no key is down,
#      even with an X server beside the compositor on which a key is held (as
#      XWayland would be); the same tool run for X11 alone sees the key.
#
# Weston runs on its X11 backend, as a window of a private Xvfb: its headless
# backend has no seat, and without a seat (a keyboard that can focus a
# surface) no client can take the selection on a compositor that lacks the
# data-control protocol, as Weston does. It gets a runtime folder and a
# socket of its own.
#
# Usage: desktop_wayland.sh PATH-TO-rz_desktop_tool
# Exits 77 (skipped) when Xvfb, weston, wl-clipboard or xdotool is missing.
set -u
TOOL=${1:?usage: desktop_wayland.sh PATH-TO-rz_desktop_tool}
[ -x "$TOOL" ] && TOOL=$(cd "$(dirname "$TOOL")" && pwd)/$(basename "$TOOL")
. "$(dirname "$0")/desktop_common.sh"
need Xvfb weston wl-copy wl-paste xdotool setpriv cmp
ls /usr/lib/*/libweston-*/x11-backend.so >/dev/null 2>&1 || skip "Weston's X11 backend is not installed"

start_xvfb
export XDG_RUNTIME_DIR=$WORK/runtime
mkdir -m 700 "$XDG_RUNTIME_DIR"
SOCKET=rz-check
DISPLAY=$X_DISPLAY server weston --backend=x11-backend.so --socket="$SOCKET" --no-config \
    --idle-time=0 --width=320 --height=240 >"$WORK/weston.log" 2>&1
# Ready once a client can connect.
for _ in $(seq 1 100); do
    if [ -S "$XDG_RUNTIME_DIR/$SOCKET" ]; then
        WAYLAND_DISPLAY=$SOCKET timeout 5 wl-paste --list-types 2>&1 >/dev/null |
            grep -q "Failed to connect" || break
    fi
    kill -0 "${SERVERS[-1]}" 2>/dev/null || break
    sleep 0.1
done
[ -S "$XDG_RUNTIME_DIR/$SOCKET" ] || { tail -n 20 "$WORK/weston.log"; fail "weston did not start"; exit 1; }
export WAYLAND_DISPLAY=$SOCKET
unset DISPLAY
say "Weston on $WAYLAND_DISPLAY, inside Xvfb on $X_DISPLAY"

# --- 1. The clipboard ---------------------------------------------------------------

tool paste "$WORK/fresh"
check "a fresh compositor offers no text, and pastes nothing" \
    "$(tool has) $(stat -c %s "$WORK/fresh")" "none 0"

printf 'one\0two\n\377 $(touch %s/pwned) *' "$WORK" >"$WORK/mixed"
tool copy "$WORK/mixed"
marked timeout 10 wl-paste --no-newline >"$WORK/mixed.out" 2>/dev/null
same "a text copied by a process that has exited is read by wl-paste" "$WORK/mixed" \
    "$WORK/mixed.out"
[ -e "$WORK/pwned" ] && fail "a shell read the text"
check "the copied text is offered" "$(tool has)" text

printf 'from wl-copy\0\n\t\200' >"$WORK/wl.in"
# Typed, as a text: left to guess, wl-copy asks xdg-mime when it is installed,
# which calls these bytes application/octet-stream.
marked timeout 10 wl-copy --type text/plain <"$WORK/wl.in" 2>/dev/null
tool paste "$WORK/wl.out"
same "a text put there by wl-copy is what CopyFromClipboard gives" "$WORK/wl.in" "$WORK/wl.out"

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
