#!/usr/bin/env bash
# Makes the Debian packages and lets dpkg install, upgrade and remove them in a root folder of its own.
# Usage: package_test.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
export LC_ALL=C

source_folder=$1
work=$(mktemp -d -p "$2" 'package test.XXXXXX') # the blank in the name is part of the test
trap 'rm -rf "$work"' EXIT
export GST_REGISTRY=$work/gst-registry.bin # the user's own names his plugins, not this build's
root=$work/root
home=$root/home/root/tubix4_app
wants=$root/etc/systemd/system/multi-user.target.wants/tubix4.service
card_wants=$root/etc/systemd/system/dev-mmcblk1p1.device.wants/media-mmcblk1p1.mount
failures=0

check()
{
    if [ "$2" != "$3" ]; then
        printf 'FAIL: %s\n  expected: %s\n  got:      %s\n' "$1" "$3" "$2"
        failures=$((failures + 1))
    fi
}

there()
{
    local file
    for file; do [ -e "$file" ] || [ -L "$file" ] || echo "no ${file#"$root"}"; done
}

# The maintainer scripts run here, on the root folder that they are told: the host stays as it is.
package_tool()
{
    dpkg --root="$root" --force-not-root --force-depends --force-script-chrootless --no-triggers "$@" \
        >"$work/dpkg.log" 2>&1 || { cat "$work/dpkg.log"; exit 1; }
}

# owner_files: every byte of the owner's folder.
owner_files()
{
    (cd "$root/home" && find . -type f -exec md5sum {} + | sort -k 2)
}

make_packages()
{
    cpack --config "$2/CPackConfig.cmake" -B "$work" -D CPACK_DEBIAN_COMPRESSION_TYPE=gzip >"$work/cpack.log" 2>&1 ||
        { cat "$work/cpack.log"; exit 1; }
    application=$(echo "$work"/tubix4_*.deb) unit=$(echo "$work"/tubix4-unit_*.deb)
    simulator=$(echo "$work"/tubix4-simulator_*.deb) viewer=$(echo "$work"/tubix4-viewer_*.deb)
}

test_dependencies()
{
    local depends package
    depends=$(dpkg-deb -f "$application" Depends)
    for package in libqt6widgets6 libgstreamer1.0-0 libopencv-videoio libsystemd0 ffmpeg fonts-noto-cjk; do
        check "the application depends on $package" "$(grep -o "$package" <<<"$depends" | head -n 1)" "$package"
    done
    depends="$depends $(dpkg-deb -f "$unit" Depends)"
    while read -r package; do
        check "a role's package $package" "$(grep -o -- "$package" <<<"$depends" | head -n 1)" "$package"
    done < <(grep -o 'gstreamer1\.0-[a-z-]*' "$source_folder/src/media/boardelements.cpp" | sort -u)
}

test_install()
{
    mkdir -p "$root"/var/lib/dpkg/{info,updates,triggers} "$home/damagecatelog"
    touch "$root/var/lib/dpkg/status"
    echo mine >"$home/damagecatelog/damagecat_de.txt"
    package_tool -i "$application" "$simulator"
    check 'application and simulator leave a desk alone' "$(owner_files | wc -l) $(ls "$root")" \
        "1 $(printf 'home\nusr\nvar')"
    package_tool -i "$unit"
    check 'a new unit has its files' "$(there "$home/globlsystemsettings_default.xml" \
        "$home/damagecatelog/damagecat_en.txt" "$wants" "$card_wants" "$root/etc/default/tubix4")" ''
    package_tool -i "$viewer"
    check 'the viewer stays off' "$("$root/usr/bin/tubix4-viewer" --root "$root")" \
        'viewer: off, see /etc/default/tubix4-viewer'
    check 'one catalog a language' "$(ls "$home/damagecatelog")" \
        "$(ls "$source_folder/resources/damagecatelog")"
    check 'an owner'\''s catalog stays' "$(cat "$home/damagecatelog/damagecat_de.txt")" mine
    check 'examples stay examples' "$(cd "$root" && find home etc -name '*.sh' -o -name 'board.conf' -o -name 'hostapd*')" ''
}

# What lies where the packages put it finds what it needs beside itself.
test_programs()
{
    check 'help' "$("$root/usr/bin/tubix4" --help | head -c 13)" 'Usage: tubix4'
    check 'the film module is where it is looked for' \
        "$(grep -cao '/\.\./lib/tubix4/film' "$root/usr/bin/tubix4")$(there "$root/usr/lib/tubix4/film/libtubixfilm.so")" 1
    QT_QPA_PLATFORM=offscreen "$root/usr/bin/tubix4-desk" --unit "$work/desk" >"$work/out" 2>&1 &
    local program=$! tries=0 status=0
    until grep -q '^ready:' "$work/out" || [ $((tries += 1)) -gt 300 ]; do sleep 0.1; done
    check 'the simulated unit shows its picture' "$(grep -o '^ready:' "$work/out" || tail -n 5 "$work/out")" ready:
    "$root/usr/bin/tubix4-desk" --unit "$work/desk" meter 1.23
    check 'hands reach the unit' "$("$root/usr/bin/tubix4-desk" --unit "$work/desk" status | grep -o '1\.23 m')" '1.23 m'
    kill "$program"
    wait "$program" || status=$?
    check 'it ends in order' "$status" 0
}

test_upgrade_and_removal()
{
    echo '<changed/>' >"$home/globlsystemsettings_default.xml"
    echo '1,2,3' >"$home/eventlog.csv"
    echo 'QT_QPA_PLATFORM=eglfs' >"$root/etc/default/tubix4"
    rm "$wants" "$card_wants" # as an owner who disables both
    local before
    before=$(owner_files)
    dpkg-deb -R "$unit" "$work/next"
    sed -i 's/^Version: .*/&.1/' "$work/next/DEBIAN/control"
    dpkg-deb -b "$work/next" "$work/next.deb" >/dev/null
    package_tool -i "$work/next.deb"
    check 'upgrade: the owner'\''s files' "$(owner_files)" "$before"
    check 'upgrade: the environment' "$(cat "$root/etc/default/tubix4")" QT_QPA_PLATFORM=eglfs
    check 'upgrade: disabled stays disabled' "$(there "$wants" "$card_wants")" \
        "$(printf 'no %s\n' "${wants#"$root"}" "${card_wants#"$root"}")"
    package_tool -r tubix4-viewer tubix4-unit tubix4-simulator tubix4
    check 'removal: the owner'\''s files' "$(owner_files)" "$before"
    check 'removal: the environment' "$(cat "$root/etc/default/tubix4")" QT_QPA_PLATFORM=eglfs
    package_tool -P tubix4-viewer tubix4-unit tubix4-simulator tubix4
    check 'purge: the owner'\''s files' "$(owner_files)" "$before"
    check 'purge: nothing else is left' "$(find "$root" \( -name '*tubix4*' -o -name '*mmcblk1p1.mount*' \) ! -path '*/home/*')" ''
}

make_packages "$@"
test_dependencies
test_install
test_programs
test_upgrade_and_removal

if [ "$failures" -gt 0 ]; then
    echo "$failures checks failed"
    exit 1
fi
echo 'all checks passed'
