#!/usr/bin/env bash
# Checks the MIME entry rz.xml as the desktop uses it: valid against the
# document type of the freedesktop.org database, none of its patterns
# already claimed there, and, after update-mime-database into a scratch
# folder, sample files named by GIO (and by xdg-mime, when installed) with
# the entry's types: by name, by name in capitals, and by content alone.
#
#   check_mime.sh RZ.XML [SYSTEM_MIME_DIR]
#
# Exit code 77 (skipped) when xmllint, update-mime-database or gio is missing.
set -euo pipefail

xml=$1
system_mime=${2:-/usr/share/mime}
system_db=$system_mime/packages/freedesktop.org.xml

for program in xmllint update-mime-database gio; do
    if ! command -v "$program" >/dev/null; then
        echo "skipped: $program is not installed (Debian: libxml2-utils, shared-mime-info," \
             "libglib2.0-bin)"
        exit 77
    fi
done
if [ ! -f "$system_db" ]; then
    echo "skipped: no freedesktop.org MIME database at $system_db"
    exit 77
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The database's document type is the schema of every package file.
awk '/<!DOCTYPE/ { inside = 1; next } inside && /^\]>/ { exit } inside' "$system_db" \
    >"$work/mime-info.dtd"
xmllint --noout --dtdvalid "$work/mime-info.dtd" "$xml"

# Patterns the desktop's database already has would make two types compete.
while read -r pattern; do
    if grep -qiF "<glob pattern=\"$pattern\"" "$system_db"; then
        echo "the freedesktop.org database already has $pattern" >&2
        exit 1
    fi
done < <(sed -n 's/.*<glob pattern="\([^"]*\)".*/\1/p' "$xml")

mkdir -p "$work/data/mime/packages"
cp "$xml" "$work/data/mime/packages/"
update-mime-database "$work/data/mime"

mkdir "$work/files"
printf 'CGATS.17\nORIGINATOR\t"rz"\nNUMBER_OF_FIELDS\t4\n' >"$work/files/target.it8"
cp "$work/files/target.it8" "$work/files/SCAN.CIE"
cp "$work/files/target.it8" "$work/files/reference.ref"
cp "$work/files/target.it8" "$work/files/measurement"
printf '\000\001\000\001\000\000\377\377\000\000\000\000\000\000' >"$work/files/colours.aco"

failed=0
check() {  # FILE TYPE
    local file=$work/files/$1 want=$2 got
    got=$(XDG_DATA_HOME="$work/data" XDG_DATA_DIRS="$system_mime/.." \
        gio info -a standard::content-type "$file" | sed -n 's/^ *standard::content-type: //p')
    if [ "$got" != "$want" ]; then
        echo "gio: $1 is '$got', not $want" >&2
        failed=1
    fi
    if command -v xdg-mime >/dev/null; then
        # xdg-mime asks GIO on a GNOME desktop.
        got=$(XDG_DATA_HOME="$work/data" XDG_DATA_DIRS="$system_mime/.." XDG_CURRENT_DESKTOP=GNOME \
            xdg-mime query filetype "$file")
        if [ "$got" != "$want" ]; then
            echo "xdg-mime: $1 is '$got', not $want" >&2
            failed=1
        fi
    fi
}
check target.it8 text/x-cgats
check SCAN.CIE text/x-cgats
check reference.ref text/x-cgats
check measurement text/x-cgats
check colours.aco application/x-adobe-aco
[ "$failed" = 0 ] || exit 1
command -v xdg-mime >/dev/null || echo "xdg-mime is not installed: checked with gio alone"
echo "MIME entry valid; sample files named text/x-cgats and application/x-adobe-aco"
