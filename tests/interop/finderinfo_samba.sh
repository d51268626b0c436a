#!/usr/bin/env bash
# Finder information written and read by the framework, checked against a
# real SMB server with Mac extensions (Samba's vfs_fruit):
#   1. type, creator and the invisible flag stamped here (rz stamp) are what
#      an SMB client reads from the file's AFP_AfpInfo stream;
#   2. Finder information an SMB client writes is what the framework reads
#      (rz info);
#   3. the framework's read-modify-write of a record the server made keeps it
#      valid for the server;
#   4. with fruit:metadata = stream, the framework reads the client's stream
#      and its writes reach the client;
#   5. a file a client made read-only (setmode +r, what a Mac client does for
#      the Finder's Locked box) reads as locked (RzSystem::IsFileLocked), and
#      once unlocked here (RzSystem::UnLockFile) the client sees it writable
#      again and may write it.
#
# Usage: finderinfo_samba.sh PATH-TO-rz PATH-TO-rz_unlock
# Runs a private smbd on 127.0.0.1 and a free high port, in its own PID
# namespace that dies with this script, in a fresh temporary folder that is
# removed at the end. Exits 77 (skipped) unless run as root with samba,
# smbclient and the fruit module installed.
set -u

RZ=${1:?usage: finderinfo_samba.sh PATH-TO-rz PATH-TO-rz_unlock}
TOOL=${2:?usage: finderinfo_samba.sh PATH-TO-rz PATH-TO-rz_unlock}
[ -x "$RZ" ] && RZ=$(cd "$(dirname "$RZ")" && pwd)/$(basename "$RZ")
[ -x "$TOOL" ] && TOOL=$(cd "$(dirname "$TOOL")" && pwd)/$(basename "$TOOL")
. "$(dirname "$0")/check_common.sh"
PASSWORD=rz-finderinfo

[ "$(id -u)" = 0 ] || skip "needs root (smbd switches to the connecting user)"
for tool in smbd smbclient smbpasswd testparm setpriv unshare od timeout; do
    command -v "$tool" >/dev/null 2>&1 || skip "$tool is not installed"
done
ls /usr/lib/*/samba/vfs/fruit.so >/dev/null 2>&1 || skip "Samba's fruit module is not installed"
[ -x "$RZ" ] && [ -x "$TOOL" ] || { say "FAIL: no program at $RZ or $TOOL"; exit 1; }

WORK=$(mktemp -d "${TMPDIR:-/tmp}/rz-samba.XXXXXX")
SERVER_PID=

ours() {  # processes whose command line names our work folder
    local f pid cmd
    for f in /proc/[0-9]*/cmdline; do
        pid=${f#/proc/}
        pid=${pid%/cmdline}
        cmd=$(tr '\0' ' ' 2>/dev/null <"$f") || continue
        case $cmd in *"$WORK/"*) printf '%s ' "$pid" ;; esac
    done
}

cleanup() {
    if [ -n "$SERVER_PID" ]; then
        # SERVER_PID is unshare, which ignores TERM while it waits; its one
        # child is smbd, PID 1 of the namespace: when smbd goes, the kernel
        # takes every helper it started along with it. smbd is asked to stop,
        # then unshare is killed, which kills smbd if it is still there.
        local child
        child=$(cat "/proc/$SERVER_PID/task/$SERVER_PID/children" 2>/dev/null)
        [ -n "$child" ] && kill -TERM $child 2>/dev/null
        for _ in $(seq 1 50); do
            kill -0 "$SERVER_PID" 2>/dev/null || break
            sleep 0.1
        done
        kill -KILL "$SERVER_PID" 2>/dev/null
        wait "$SERVER_PID" 2>/dev/null
    fi
    # Nothing that ran with our configuration may outlive us.
    finish_check
}
trap 'cleanup; exit $?' EXIT
trap 'exit 130' INT TERM

listening() {  # port: true when something listens on 127.0.0.1:port
    grep -qi "0100007F:$(printf '%04X' "$1") 00000000:0000 0A" /proc/net/tcp
}
in_use() {
    grep -qi ":$(printf '%04X' "$1") " /proc/net/tcp /proc/net/tcp6 2>/dev/null
}
PORT=${RZ_SMB_PORT:-}
if [ -z "$PORT" ]; then
    for _ in $(seq 1 50); do
        PORT=$((20000 + RANDOM % 40000))
        in_use "$PORT" || break
    done
fi

mkdir -p "$WORK"/{private,lock,state,cache,run,ncalrpc,log,out,meta,stream}
chmod 755 "$WORK" "$WORK/meta" "$WORK/stream"
CONF=$WORK/smb.conf
cat >"$CONF" <<EOF
[global]
    server role = standalone server
    netbios name = RZCHECK
    interfaces = 127.0.0.1
    bind interfaces only = yes
    smb ports = $PORT
    disable netbios = yes
    server min protocol = SMB2_10
    private dir = $WORK/private
    lock directory = $WORK/lock
    state directory = $WORK/state
    cache directory = $WORK/cache
    pid directory = $WORK/run
    ncalrpc dir = $WORK/ncalrpc
    log file = $WORK/log/smbd.log
    log level = 1
    passdb backend = tdbsam:$WORK/private/passdb.tdb
    load printers = no
    printcap name = /dev/null
    disable spoolss = yes
    usershare max shares = 0

[meta]
    path = $WORK/meta
    read only = no
    vfs objects = catia fruit streams_xattr
    fruit:metadata = netatalk
    fruit:resource = file

[stream]
    path = $WORK/stream
    read only = no
    vfs objects = catia fruit streams_xattr
    fruit:metadata = stream
    fruit:resource = file
EOF
testparm -s "$CONF" >"$WORK/log/testparm" 2>&1 || { cat "$WORK/log/testparm"; fail "testparm"; exit 1; }
printf '%s\n%s\n' "$PASSWORD" "$PASSWORD" | smbpasswd -c "$CONF" -s -a root >/dev/null 2>&1 ||
    { fail "smbpasswd could not add root"; exit 1; }

# setpriv: the namespace dies with this shell even if it is killed outright.
setpriv --pdeathsig KILL unshare --pid --fork --kill-child=KILL \
    smbd --foreground --debug-stdout --configfile="$CONF" >"$WORK/log/smbd.out" 2>&1 &
SERVER_PID=$!
for _ in $(seq 1 100); do
    listening "$PORT" && break
    kill -0 "$SERVER_PID" 2>/dev/null || break
    sleep 0.1
done
if ! listening "$PORT"; then
    tail -n 20 "$WORK/log/smbd.out"
    fail "smbd did not start on 127.0.0.1:$PORT"
    exit 1
fi
say "smbd listens on 127.0.0.1:$PORT"

smb() {  # share command: output to the log, status of smbclient
    smb_out "$@" >>"$WORK/log/smbclient" 2>&1
}
smb_out() {  # share command: output to standard output
    timeout 60 smbclient "//127.0.0.1/$1" -p "$PORT" -U "root%$PASSWORD" \
        --configfile="$CONF" -m SMB3 -c "$2"
}

# The 60-byte AFP_AfpInfo stream a client sends: "AFP\0", version 0x100,
# reserved, backup time unknown, Finder information (type, creator, flags),
# zeros.
afpinfo() {  # file type creator flags-hex4
    {
        printf 'AFP\0\0\0\1\0\0\0\0\0\200\0\0\0%s%s' "$2" "$3"
        printf "\\x${4:0:2}\\x${4:2:2}"
        head -c 34 /dev/zero
    } >"$1"
}

# Checks a stream fetched over SMB: size, signature, version and the first ten
# bytes of its Finder information.
check_afpinfo() {  # file type creator flags-hex4 what
    local want got
    want=$(printf '%s%s' "$2" "$3" | od -An -tx1 | tr -d ' \n')${4}
    got=$(od -An -tx1 -j16 -N10 "$1" 2>/dev/null | tr -d ' \n')
    if [ "$(stat -c %s "$1" 2>/dev/null)" = 60 ] &&
        [ "$(od -An -tx1 -N8 "$1" | tr -d ' \n')" = 4146500000000100 ] && [ "$got" = "$want" ]; then
        pass "$5"
    else
        fail "$5 (got ${got:-nothing}, want $want)"
    fi
}

in_share() {  # share rz-arguments...: rz run inside a share's folder
    local share=$1
    shift
    (cd "$WORK/$share" && "$RZ" "$@")
}

check_read() {  # share name expected-finder-line what
    local got
    got=$(in_share "$1" info "$2" 2>&1 | sed -n 's/^finder: //p')
    if [ "$got" = "$3" ]; then pass "$4"; else fail "$4 (got '$got', want '$3')"; fi
}

cd "$WORK/out" || exit 1
printf 'hello\n' >local.txt

# Names are given relative to the share's folder, so that a dot in the path of
# the work folder cannot count as an extension.

# 1. Stamped here, read by a client.
printf 'hello\n' >"$WORK/meta/stamped.txt"
in_share meta stamp stamped.txt --type TEXT --creator ttxt --hide || fail "stamping stamped.txt"
smb meta 'get stamped.txt:AFP_AfpInfo stamped.afpinfo'
check_afpinfo stamped.afpinfo TEXT ttxt 4000 "a client reads the type, creator and invisible flag stamped here"

# 2. Written by a client, read here. Without an extension the stored type is
#    what the framework reports.
afpinfo prof.afpinfo prof sync 4000
smb meta 'put local.txt client; put prof.afpinfo client:AFP_AfpInfo'
check_read meta client "type 'prof', creator 'sync', flags 0x4000 (invisible)" \
    "the Finder information a client wrote is read here"

# 3. Changed here in the server's own record (a new creator; the type has no
#    code from the name, so the client's stays), read again by a client.
in_share meta stamp client --creator 8BIM --show || fail "restamping client"
smb meta 'get client:AFP_AfpInfo restamped.afpinfo; get client client.copy'
check_afpinfo restamped.afpinfo prof 8BIM 0000 "the server's record changed here stays valid for the server"
if cmp -s client.copy local.txt; then
    pass "stamping keeps the contents"
else
    fail "stamping keeps the contents"
fi

# 4. The stream store.
smb stream 'put local.txt s; put prof.afpinfo s:AFP_AfpInfo'
check_read stream s "type 'prof', creator 'sync', flags 0x4000 (invisible)" \
    "with fruit:metadata = stream the client's Finder information is read here"
in_share stream stamp s --creator ttxt --show || fail "stamping s"
smb stream 'get s:AFP_AfpInfo s.afpinfo'
check_afpinfo s.afpinfo prof ttxt 0000 "with fruit:metadata = stream a client reads what is stamped here"

# 5. Locked. The client's read-only attribute is the Finder's Locked box.
check_locked() {  # share name expected what
    local got
    got=$(in_share "$1" info "$2" 2>&1 | sed -n 's/^locked: //p')
    if [ "$got" = "$3" ]; then pass "$4"; else fail "$4 (got '$got', want '$3')"; fi
}
attributes() {  # share name: the DOS attributes a client reads, as "allinfo|ls"
    local info list
    info=$(smb_out "$1" "allinfo $2" 2>/dev/null | sed -n 's/^attributes: *//p')
    list=$(smb_out "$1" "ls $2" 2>/dev/null | awk -v n="$2" '$1 == n { print $2 }')
    printf '%s|%s' "$info" "$list"
}
smb meta 'put local.txt locked.txt; setmode locked.txt +r'
got=$(attributes meta locked.txt)
if [ "$got" = "RA (21)|AR" ]; then
    pass "setmode +r makes the file read-only for the client"
else
    fail "setmode +r (client reads '$got')"
fi
check_locked meta locked.txt yes "a file a client made read-only reads as locked here"
if smb meta 'put local.txt locked.txt'; then
    fail "the client could write a read-only file"
else
    pass "the client may not write it"
fi
(cd "$WORK/meta" && "$TOOL" locked.txt) || fail "unlocking locked.txt"
check_locked meta locked.txt no "unlocked here, it reads as not locked"
got=$(attributes meta locked.txt)
if [ "$got" = "A (20)|A" ]; then
    pass "unlocked here, the client sees the file writable again (its record kept valid)"
else
    fail "after unlocking, the client reads attributes '$got', want 'A (20)|A'"
fi
printf 'rewritten\n' >rewritten.txt
if smb meta 'put rewritten.txt locked.txt' && cmp -s "$WORK/meta/locked.txt" rewritten.txt; then
    pass "the client writes the unlocked file"
else
    fail "the client could not write the unlocked file"
fi
