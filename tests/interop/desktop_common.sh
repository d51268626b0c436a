# Shared by the desktop checks (desktop_x11.sh, desktop_wayland.sh): results,
# the processes they start, and a private Xvfb. Sourced after TOOL is set.
# Every process started through `marked` (and whatever it starts) carries
# RZ_DESKTOP_CHECK=<work folder> in its environment; none may outlive the
# check. Servers are killed by their process IDs on every way out, and by the
# kernel if the script itself is killed (setpriv --pdeathsig).
. "$(dirname "${BASH_SOURCE[0]}")/check_common.sh"
SERVERS=()  # process IDs, stopped last first
need() {  # programs
    local p
    for p in "$@"; do command -v "$p" >/dev/null 2>&1 || skip "$p is not installed"; done
    [ -x "$TOOL" ] || { say "FAIL: no tool at $TOOL"; exit 1; }
}

WORK=$(mktemp -d "${TMPDIR:-/tmp}/rz-desktop.XXXXXX")
MARK="RZ_DESKTOP_CHECK=$WORK"
ENV=$(command -v env)
marked() { "$ENV" "$MARK" "$@"; }
tool() { marked "$TOOL" "$@"; }
server() { setpriv --pdeathsig KILL "$ENV" "$MARK" "$@" & SERVERS+=($!); }

ours() {  # the marked processes
    local f pid
    for f in /proc/[0-9]*/environ; do
        pid=${f#/proc/}
        pid=${pid%/environ}
        tr '\0' '\n' 2>/dev/null <"$f" | grep -qxF "$MARK" && printf '%s ' "$pid"
    done
}

cleanup() {
    local i pid
    for ((i = ${#SERVERS[@]} - 1; i >= 0; i--)); do
        pid=${SERVERS[i]}
        kill -TERM "$pid" 2>/dev/null
        for _ in $(seq 1 50); do
            kill -0 "$pid" 2>/dev/null || break
            sleep 0.1
        done
        kill -KILL "$pid" 2>/dev/null
        wait "$pid" 2>/dev/null
    done
    # The clipboard programs' helpers leave with their server.
    finish_check
}
trap 'cleanup; exit $?' EXIT
trap 'exit 130' INT TERM

# Starts Xvfb on a display it picks itself (it writes the number once it
# accepts clients) and sets X_DISPLAY. -noreset keeps the clipboard and the
# keys when the last client leaves.
start_xvfb() {
    server Xvfb -displayfd 3 -nolisten tcp -noreset -screen 0 640x480x24 \
        3>"$WORK/display" 2>"$WORK/xvfb.log"
    for _ in $(seq 1 100); do
        [ -s "$WORK/display" ] && break
        kill -0 "${SERVERS[-1]}" 2>/dev/null || break
        sleep 0.1
    done
    [ -s "$WORK/display" ] || { tail -n 20 "$WORK/xvfb.log"; fail "Xvfb did not start"; exit 1; }
    X_DISPLAY=":$(tr -dc 0-9 <"$WORK/display")"
}

same() {  # what expected-file got-file
    if cmp -s "$2" "$3"; then pass "$1"; else fail "$1: got $(od -An -c "$3" | head -c 200)"; fi
}
