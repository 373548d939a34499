#!/usr/bin/env bash
# Packs the built project as a Debian package and checks it as a user and a
# packager would meet it: check-package.sh <build folder> <work folder>
#   - the package holds stripped, hardened programs, its symbols go to a
#     separate -dbgsym package, and it does not list /opt itself;
#   - its dependencies name no plug-in package, a metric-compatible font, and
#     the sound support only as a recommendation;
#   - installed with dpkg into a throw-away root, every file is where the
#     desktop looks for it, with the modes Debian expects; removed again,
#     nothing is left and dpkg has nothing to warn about;
#   - lintian finds no error and no warning beyond those the README explains.
# Exits with 77, which CTest reports as skipped, when a tool is missing.
set -euo pipefail
build=$1
work=$2

for tool in cpack dpkg dpkg-deb dpkg-shlibdeps ar xz objcopy readelf; do
    if ! command -v "$tool" >/dev/null 2>&1; then
        echo "$tool is not installed; install it to check the Debian package"
        exit 77
    fi
done

failures=0
fail() {
    echo "FAIL: $*"
    failures=$((failures + 1))
}

rm -rf "$work"
mkdir -p "$work"
if ! cpack -G DEB -B "$work/out" --config "$build/CPackConfig.cmake" >"$work/cpack.log" 2>&1; then
    cat "$work/cpack.log"
    exit 1
fi
deb=$(ls "$work"/out/*.deb)
ls "$work"/out/*-dbgsym_*.ddeb >/dev/null 2>&1 || fail "no debug-symbols package"

# --- The package as dpkg-deb shows it -------------------------------------------
shows ' ./opt/
' dpkg-deb -c "$deb" && fail "the package lists /opt itself"
depends=$(dpkg-deb -f "$deb" Depends)
recommends=$(dpkg-deb -f "$deb" Recommends)
[[ $depends == *libqt6widgets6* && $depends == *fonts-liberation2* ]] || fail "Depends: $depends"
[[ $depends == *qt6-qpa-plugins* || $depends == *libpulse* ]] && fail "Depends: $depends"
[[ $recommends == *libpulse0* ]] || fail "Recommends: $recommends"

# shows <text> <command...>: whether the command's output holds the text. (A
# pipe into grep -q would let the command die of SIGPIPE, failing the pipe.)
shows() {
    local output
    output=$("${@:2}")
    [[ $output == *"$1"* ]]
}

contents="$work/contents"
dpkg-deb -x "$deb" "$contents"
while IFS= read -r -d '' elf; do
    name=${elf#"$contents"}
    shows .debug_info readelf -S "$elf" && fail "not stripped: $name"
    shows BIND_NOW readelf -d "$elf" || fail "not bound at start (-z now): $name"
    shows GNU_RELRO readelf -l "$elf" || fail "no read-only relocations: $name"
done < <(find "$contents" -type f -exec sh -c 'head -c4 "$1" | grep -q "ELF"' sh {} \; -print0)
launcher=$(find "$contents" -path '*/Contents/MacOS/Start-Center' -type f)
shows 'Position-Independent Executable' readelf -h "$launcher" || fail "launcher is not PIE"
shows __stack_chk_fail readelf --dyn-syms -W "$launcher" || fail "launcher has no stack protector"
shows _chk@ readelf --dyn-syms -W "$launcher" || fail "launcher has no checked C library calls"

# --- Installed into a throw-away root ----------------------------------------------
root="$work/root"
mkdir -p "$root/opt" "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/info"
touch "$root/var/lib/dpkg/status"
dpkg_root=(dpkg --root="$root" --log=/dev/null --force-not-root --force-depends)
"${dpkg_root[@]}" -i "$deb" >"$work/install.log" 2>&1 || { cat "$work/install.log"; exit 1; }

expect() {   # expect <mode> <path below the root>
    local mode
    mode=$(stat -c '%a' "$root$2" 2>/dev/null) || { fail "missing: $2"; return; }
    [ "$mode" = "$1" ] || fail "mode $mode instead of $1: $2"
}
bundle=/opt/orvane/Start-Center.app/Contents
expect 755 /usr/bin/startcenter
expect 755 "$bundle/MacOS/Start-Center"
expect 644 "$bundle/Resources/ORVKonf.ini"
expect 644 /usr/share/man/man1/startcenter.1.gz
expect 644 /usr/share/doc/orvane-startcenter/copyright
expect 644 /usr/share/doc/orvane-startcenter/changelog.Debian.gz
expect 644 /usr/share/applications/de.marvendo.startcenter.desktop
expect 644 /usr/share/metainfo/de.marvendo.startcenter.metainfo.xml
expect 644 /usr/share/icons/hicolor/scalable/apps/de.marvendo.startcenter.svg
for size in 16 22 24 32 48 64 128 256; do
    expect 644 "/usr/share/icons/hicolor/${size}x${size}/apps/de.marvendo.startcenter.png"
done
writable=$(find "$root/opt" "$root/usr" -perm /022 ! -type l)
[ -z "$writable" ] || fail "writable by others: $writable"

"${dpkg_root[@]}" -r orvane-startcenter >"$work/remove.log" 2>&1 || { cat "$work/remove.log"; exit 1; }
shows warning cat "$work/remove.log" && fail "dpkg warned while removing the package"
[ -d "$root/opt" ] || fail "/opt went away with the package"
left=$(find "$root" -path "$root/var" -prune -o ! -type d -print)
[ -z "$left" ] || fail "left after removal: $left"

# --- lintian ------------------------------------------------------------------------
# The tags the README explains: the bundle lives in /opt, which the package
# does not list; the sample files are Latin-1; the package is the vendor's,
# not an upload to Debian that would close a bug.
explained='dir-or-file-in-opt|missing-intermediate-directory|national-encoding|initial-upload-closes-no-bugs'
if command -v lintian >/dev/null 2>&1; then
    lintian --pedantic --no-tag-display-limit "$deb" >"$work/lintian.log" 2>&1 || true
    unexplained=$(grep -E '^[EW]: ' "$work/lintian.log" | grep -vE " ($explained) " || true)
    [ -z "$unexplained" ] || fail "lintian: $unexplained"
else
    echo "lintian is not installed: the package was not checked with it"
fi

if [ "$failures" -ne 0 ]; then
    echo "$failures problem(s) with $deb"
    exit 1
fi
rm -rf "$work"
echo "Debian package installs and removes cleanly: $(basename "$deb")"
