#!/usr/bin/env bash
# The desktop services of RzSystem against a real X server (Xvfb):
#   1. the clipboard through xclip: a fresh server has no text; a text copied
#      by a process that has exited since is what `xclip -o` reads, bytes as
#      they are (zero bytes, line feeds, bytes above 127, shell syntax); a
#      text put there by `xclip -i` is what CopyFromClipboard gives; an empty
#      text, and one of several megabytes;
#   2. the same through xsel when xclip is not installed (texts without zero
#      bytes: xsel ends a text at its first one);
#   3. a display that does not answer gives an empty clipboard at once;
#   4. the keyboard: a key held with `xdotool keydown` is seen by TestKey and
#      GetNativeKey (Shift, right Shift, Control, right Control, Option,
#      Escape, a letter) and Command with period by KeyBreak;
#   5. SystemActive(true) resets the server's idle time;
#   6. Beep rings the server's bell once, or three times with the pauses.
#
# Usage: desktop_x11.sh PATH-TO-rz_desktop_tool
# Runs a private Xvfb on a display number it picks itself, killed by its
# process ID on every way out (and by the kernel if this script is killed);
# every process started here carries a marker in its environment, and none
# may outlive the script. Exits 77 (skipped) when Xvfb, xclip, xsel or
# xdotool is missing.
set -u

TOOL=${1:?usage: desktop_x11.sh PATH-TO-rz_desktop_tool}
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

for tool in Xvfb xclip xsel xdotool setpriv cmp; do
    command -v "$tool" >/dev/null 2>&1 || skip "$tool is not installed"
done
[ -x "$TOOL" ] || { say "FAIL: no tool at $TOOL"; exit 1; }

WORK=$(mktemp -d "${TMPDIR:-/tmp}/rz-x11.XXXXXX")
MARK="RZ_DESKTOP_CHECK=$WORK"
SERVER_PID=

ours() {  # processes started here, by the marker in their environment
    local f pid
    for f in /proc/[0-9]*/environ; do
        pid=${f#/proc/}
        pid=${pid%/environ}
        tr '\0' '\n' 2>/dev/null <"$f" | grep -qxF "$MARK" && printf '%s ' "$pid"
    done
}

cleanup() {
    if [ -n "$SERVER_PID" ]; then
        kill -TERM "$SERVER_PID" 2>/dev/null
        for _ in $(seq 1 50); do
            kill -0 "$SERVER_PID" 2>/dev/null || break
            sleep 0.1
        done
        kill -KILL "$SERVER_PID" 2>/dev/null
        wait "$SERVER_PID" 2>/dev/null
    fi
    # The clipboard helpers leave when their server goes.
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

ENV=$(command -v env)
marked() { "$ENV" "$MARK" "$@"; }
tool() { marked "$TOOL" "$@"; }

# Xvfb picks a free display and writes its number when it accepts clients.
# -noreset keeps the clipboard and the keys when the last client leaves.
setpriv --pdeathsig KILL env "$MARK" Xvfb -displayfd 3 -nolisten tcp -noreset \
    -screen 0 640x480x24 3>"$WORK/display" 2>"$WORK/xvfb.log" &
SERVER_PID=$!
for _ in $(seq 1 100); do
    [ -s "$WORK/display" ] && break
    kill -0 "$SERVER_PID" 2>/dev/null || break
    sleep 0.1
done
[ -s "$WORK/display" ] || { tail -n 20 "$WORK/xvfb.log"; fail "Xvfb did not start"; exit 1; }
export DISPLAY=":$(tr -dc 0-9 <"$WORK/display")"
unset WAYLAND_DISPLAY
say "Xvfb on $DISPLAY"

# --- 1. The clipboard through xclip --------------------------------------------

check "a fresh server offers no text" "$(tool has)" none
tool paste "$WORK/fresh"
check "and pastes nothing" "$(stat -c %s "$WORK/fresh")" 0

printf 'one\0two\n\377 $(touch %s/pwned) `x` *\0' "$WORK" >"$WORK/mixed"
tool copy "$WORK/mixed"  # the tool has exited when the next line runs
marked xclip -selection clipboard -out >"$WORK/mixed.out" 2>/dev/null
if cmp -s "$WORK/mixed" "$WORK/mixed.out"; then
    pass "a text copied by a process that has exited is read by xclip, bytes as they are"
else
    fail "xclip reads $(od -An -c "$WORK/mixed.out" | head -c 200)"
fi
[ -e "$WORK/pwned" ] && fail "a shell read the text"
check "the copied text is offered" "$(tool has)" text

printf 'from xclip\0\n\t\200' >"$WORK/xclip.in"
marked xclip -selection clipboard -in <"$WORK/xclip.in" 2>/dev/null
tool paste "$WORK/xclip.out"
if cmp -s "$WORK/xclip.in" "$WORK/xclip.out"; then
    pass "a text put there by xclip -i is what CopyFromClipboard gives"
else
    fail "CopyFromClipboard gives $(od -An -c "$WORK/xclip.out" | head -c 200)"
fi

: >"$WORK/empty"
tool copy "$WORK/empty"
check "an empty text is still a text" "$(tool has)" text
tool paste "$WORK/empty.out"
check "and pastes as nothing" "$(stat -c %s "$WORK/empty.out")" 0

head -c 3000000 /dev/urandom >"$WORK/large"
tool copy "$WORK/large"
marked xclip -selection clipboard -out >"$WORK/large.out" 2>/dev/null
cmp -s "$WORK/large" "$WORK/large.out" && pass "3 MB copied" || fail "3 MB copied"
marked xclip -selection clipboard -in <"$WORK/large" 2>/dev/null
tool paste "$WORK/large.back"
cmp -s "$WORK/large" "$WORK/large.back" && pass "3 MB pasted" || fail "3 MB pasted"

# --- 2. Through xsel, without xclip ----------------------------------------------

mkdir "$WORK/xsel-only"
ln -s "$(command -v xsel)" "$WORK/xsel-only/xsel"
printf 'through xsel\n' >"$WORK/xsel.in"
PATH="$WORK/xsel-only" tool copy "$WORK/xsel.in"
marked xclip -selection clipboard -out >"$WORK/xsel.out" 2>/dev/null
cmp -s "$WORK/xsel.in" "$WORK/xsel.out" && pass "copied through xsel" || fail "copied through xsel"
check "xsel's text is offered" "$(PATH="$WORK/xsel-only" tool has)" text
printf 'back through xsel' >"$WORK/xsel.back.in"
marked xclip -selection clipboard -in <"$WORK/xsel.back.in" 2>/dev/null
PATH="$WORK/xsel-only" tool paste "$WORK/xsel.back"
cmp -s "$WORK/xsel.back.in" "$WORK/xsel.back" && pass "pasted through xsel" ||
    fail "pasted through xsel"

# --- 3. A display that does not answer ---------------------------------------------

start=$(date +%s%N)
DISPLAY=:65000 tool paste "$WORK/nowhere"
DISPLAY=:65000 tool copy "$WORK/mixed"
check "no display to reach: nothing pasted, nothing offered" \
    "$(stat -c %s "$WORK/nowhere") $(DISPLAY=:65000 tool has)" "0 none"
took=$((($(date +%s%N) - start) / 1000000))
[ "$took" -lt 5000 ] && pass "and no waiting (${took} ms)" || fail "waited ${took} ms"

# --- 4. The keyboard -----------------------------------------------------------

check "no key down" "$(tool native) $(tool test 0 0) $(tool test 3 0) $(tool break)" \
    "-1 down up up"
# The key (a name, or an X key code: xdotool holds Shift_L as well when asked
# for Shift_R by name) | TestKey codes that must be down | codes that must be
# up | GetNativeKey
while read -r key down up native; do
    marked xdotool keydown "$key"
    got=
    for codes in ${down//;/ }; do got="$got $(tool test "${codes%,*}" "${codes#*,}")"; done
    got="$got $(tool test "${up%,*}" "${up#*,}") $(tool native)"
    want=
    for _ in ${down//;/ }; do want="$want down"; done
    check "$key held" "$got" "$want up $native"
    marked xdotool keyup "$key"
done <<'EOF'
Shift_L 3,0;0,3 4,0 56
62 4,0;60,0 3,0 60
Control_L 9,0;0,9;59,9 10,0 59
105 10,0 9,0 62
Alt_L 6,0;7,0;58,0 8,0 58
108 8,0;61,0 6,0 61
Escape 1,0;53,0 2,0 53
a 0,0 1,0 0
EOF
marked xdotool keydown super+period
check "Command and period: KeyBreak" "$(tool break) $(tool test 2 47) $(tool native)" "down down 47"
marked xdotool keyup super+period
check "all keys up again" "$(tool native) $(tool break)" "-1 up"

# --- 5. Activity ------------------------------------------------------------------

sleep 1.2
out=$(tool active)
if [ $? = "$SKIP" ]; then
    say "SKIP: the tool cannot read the idle time (built without libXss)"
else
    read -r before after <<<"$out"
    if [ "${before:-0}" -ge 1000 ] && [ "${after:-99999}" -lt 500 ]; then
        pass "SystemActive resets the idle time ($before ms to $after ms)"
    else
        fail "SystemActive: idle time '$out'"
    fi
fi

# --- 6. The bell ---------------------------------------------------------------------

out=$(tool bell 0)
if [ $? = "$SKIP" ]; then
    say "SKIP: the tool cannot see the bell (built without libX11)"
else
    check "Beep(0) rings once" "${out%% *}" 1
    read -r rings took <<<"$(tool bell 1)"
    check "Beep(1) rings three times" "$rings" 3
    # Three pauses of 40 ticks; the first ends on a tick boundary.
    [ "${took:-0}" -ge 1950 ] && pass "with the pauses ($took ms)" || fail "pauses of ${took:-?} ms"
fi
