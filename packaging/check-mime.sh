#!/bin/sh
# Installs the built project into a temporary folder and asks the desktop's
# own tools about the sample case files: each has its case-file type, also
# without its usual name, and the launcher's desktop entry opens every type.
#
#   check-mime.sh <build folder> <folder of sample case files>
#
# Exits with 77, which CTest reports as skipped, when xdg-mime (xdg-utils),
# gio, update-mime-database or update-desktop-database is not installed.
set -eu
build=$1
samples=$2
for tool in xdg-mime gio update-mime-database update-desktop-database; do
    if ! command -v "$tool" >/dev/null 2>&1; then
        echo "$tool is not installed; install it to run this check"
        exit 77
    fi
done

stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
DESTDIR=$stage cmake --install "$build" --prefix /usr >/dev/null
share=$stage/usr/share
update-mime-database "$share/mime"
update-desktop-database "$share/applications" >/dev/null 2>&1
# Only the staged and the system's data; xdg-mime asks gio on this desktop.
export XDG_DATA_DIRS="$share:/usr/share" XDG_DATA_HOME="$stage/home/share" XDG_CONFIG_HOME="$stage/home/config"
export XDG_CONFIG_DIRS="$stage/etc" XDG_CURRENT_DESKTOP=GNOME

failed=0
expect() {   # expect <what> <expected> <actual>
    if [ "$2" != "$3" ]; then
        echo "$1: expected $2, got $3"
        failed=1
    fi
}

for file in "$samples"/*; do
    suffix=${file##*.}
    case $suffix in
        est11|vor12|lst12|eur11|euv12|fes11) type=application/x-orvane-$suffix ;;
        *) type=application/xml ;;   # last year's files belong to no mode
    esac
    expect "$file" "$type" "$(xdg-mime query filetype "$file")"
    # Without its name the root element tells mode and year.
    cp "$file" "$stage/ohne-namen"
    expect "$file without its name" "$type" "$(xdg-mime query filetype "$stage/ohne-namen")"
    if [ "$type" != application/xml ]; then
        expect "application for $type" de.marvendo.startcenter.desktop "$(xdg-mime query default "$type")"
    fi
done
echo "checked: $(ls "$samples" | wc -l) sample files"
exit $failed
