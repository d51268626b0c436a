#!/usr/bin/env bash
# The desktop services of RzSystem against a real X server (Xvfb):
#   1. the clipboard through xclip: a fresh server has no text; a text copied
#      by a process that has exited since is what `xclip -o` reads, bytes as
#      they are (zero bytes, bytes above 127, shell syntax); a text put there
#      by `xclip -i` is what CopyFromClipboard gives; an empty text; 3 MB;
#   2. the same through xsel when xclip is not installed (xsel ends a text at
#      its first zero byte);
#   3. a display that does not answer gives an empty clipboard at once;
#   4. a key held with `xdotool keydown` is seen by TestKey and GetNativeKey,
#      Command with period by KeyBreak;
#   5. SystemActive(true) resets the server's idle time;
#   6. Beep rings the server's bell once, or three times with the pauses.
#
# Usage: desktop_x11.sh PATH-TO-rz_desktop_tool
# Exits 77 (skipped) when Xvfb, xclip, xsel or xdotool is missing.
set -u
TOOL=${1:?usage: desktop_x11.sh PATH-TO-rz_desktop_tool}
[ -x "$TOOL" ] && TOOL=$(cd "$(dirname "$TOOL")" && pwd)/$(basename "$TOOL")
. "$(dirname "$0")/desktop_common.sh"
need Xvfb xclip xsel xdotool setpriv cmp

start_xvfb
export DISPLAY=$X_DISPLAY
unset WAYLAND_DISPLAY
say "Xvfb on $DISPLAY"
xclip_in() { marked xclip -selection clipboard -in 2>/dev/null; }
xclip_out() { marked xclip -selection clipboard -out 2>/dev/null; }

# --- 1. The clipboard through xclip --------------------------------------------

tool paste "$WORK/fresh"
check "a fresh server offers no text, and pastes nothing" \
    "$(tool has) $(stat -c %s "$WORK/fresh")" "none 0"

printf 'one\0two\n\377 $(touch %s/pwned) `x` *\0' "$WORK" >"$WORK/mixed"
tool copy "$WORK/mixed"  # the tool has exited when the next line runs
xclip_out >"$WORK/mixed.out"
same "a text copied by a process that has exited is read by xclip" "$WORK/mixed" "$WORK/mixed.out"
[ -e "$WORK/pwned" ] && fail "a shell read the text"
check "the copied text is offered" "$(tool has)" text

printf 'from xclip\0\n\t\200' >"$WORK/xclip.in"
xclip_in <"$WORK/xclip.in"
tool paste "$WORK/xclip.out"
same "a text put there by xclip -i is what CopyFromClipboard gives" "$WORK/xclip.in" \
    "$WORK/xclip.out"

: >"$WORK/empty"
tool copy "$WORK/empty"
tool paste "$WORK/empty.out"
check "an empty text is a text, and pastes as nothing" \
    "$(tool has) $(stat -c %s "$WORK/empty.out")" "text 0"

head -c 3000000 /dev/urandom >"$WORK/large"
tool copy "$WORK/large"
xclip_out >"$WORK/large.out"
same "3 MB copied" "$WORK/large" "$WORK/large.out"
xclip_in <"$WORK/large"
tool paste "$WORK/large.back"
same "3 MB pasted" "$WORK/large" "$WORK/large.back"

# --- 2. Through xsel, without xclip ----------------------------------------------

mkdir "$WORK/xsel-only"
ln -s "$(command -v xsel)" "$WORK/xsel-only/xsel"
printf 'through xsel\n' >"$WORK/xsel.in"
PATH="$WORK/xsel-only" tool copy "$WORK/xsel.in"
xclip_out >"$WORK/xsel.out"
same "copied through xsel" "$WORK/xsel.in" "$WORK/xsel.out"
check "xsel's text is offered" "$(PATH="$WORK/xsel-only" tool has)" text
printf 'back through xsel' >"$WORK/xsel.back.in"
xclip_in <"$WORK/xsel.back.in"
PATH="$WORK/xsel-only" tool paste "$WORK/xsel.back"
same "pasted through xsel" "$WORK/xsel.back.in" "$WORK/xsel.back"

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
    check "key $key held" "$got" "$want up $native"
    marked xdotool keyup "$key"
done <<'KEYS'
Shift_L 3,0;0,3 4,0 56
62 4,0;60,0 3,0 60
Control_L 9,0;0,9;59,9 10,0 59
105 10,0 9,0 62
Alt_L 6,0;7,0;58,0 8,0 58
108 8,0;61,0 6,0 61
Escape 1,0;53,0 2,0 53
a 0,0 1,0 0
KEYS
marked xdotool keydown super+period
check "Command and period: KeyBreak" "$(tool break) $(tool test 2 47) $(tool native)" "down down 47"
marked xdotool keyup super+period
check "all keys up again" "$(tool native) $(tool break)" "-1 up"

# --- 5. Activity and 6. the bell ---------------------------------------------------

sleep 1.2
out=$(tool active)
if [ $? = "$SKIP" ]; then
    say "SKIP: the tool cannot read the idle time (built without libXss)"
else
    read -r before after <<<"$out"
    [ "${before:-0}" -ge 1000 ] && [ "${after:-99999}" -lt 500 ] &&
        pass "SystemActive resets the idle time ($before ms to $after ms)" ||
        fail "SystemActive: idle time '$out'"
fi

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
