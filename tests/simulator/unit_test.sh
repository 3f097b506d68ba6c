#!/usr/bin/env bash
# Tests the control tool of the simulated unit and the stand-ins.
# Usage: unit_test.sh SOURCE_FOLDER TEMPORARY_FOLDER LIBRARY (the one that makes a card slow or fail)
set -euo pipefail
export LC_ALL=C

source_folder=$1
library=$3
work=$(mktemp -d -p "$2" 'unit test.XXXXXX') # the blank in the name is part of the test
trap 'rm -rf "$work"' EXIT
dir=$work/unit
messages=$dir/var/log/messages
failures=0

unit()
{
    "$source_folder/simulator/unit" --unit "$dir" "$@"
}

# stand_in NAME ARGUMENTS: as the application runs it.
stand_in()
{
    env -i PATH="$dir/usr/bin" "$dir/usr/bin/$1" "${@:2}"
}

check()
{
    if [ "$2" != "$3" ]; then
        printf 'FAIL: %s\n  expected: %s\n  got:      %s\n' "$1" "$3" "$2"
        failures=$((failures + 1))
    fi
}

# refused STATUS WHAT ARGUMENTS: the tool says one line on standard error, nothing else, and ends with STATUS.
refused()
{
    local expected=$1 what=$2 status=0
    shift 2
    "$source_folder/simulator/unit" "$@" >"$work/out" 2>"$work/err" || status=$?
    check "$what: status" "$status" "$expected"
    check "$what: lines on standard error" "$(wc -l <"$work/err")" 1
    check "$what: standard output" "$(cat "$work/out")" ''
}

registers()
{
    od -An -v -tu1 -w1 -j "$1" -N "$2" "$dir/dev/i2c-4" | tr -s ' \n' ' '
}

# card_line COLUMN: of what df says about the card.
card_line()
{
    stand_in df | awk -v column="$1" '$1 == "/dev/mmcblk1p1" { print $column }'
}

# batch COMMAND: the kernel's lines that a command added.
batch()
{
    local before
    before=$(wc -c <"$messages")
    unit "$@"
    tail -c +$((before + 1)) "$messages"
}

everything()
{
    (cd "$source_folder" && find simulator -type f -printf '%p %s %T@\n' | sort)
}

test_create()
{
    unit create
    check 'a new unit: firmware, battery, cable' "$(registers 1 5)" ' 97 3 112 0 0 '
    check 'factory settings are XML of the expected depth' \
        "$(grep -c '^        <[A-Za-z]*>[0-9]*</[A-Za-z]*>$' "$dir/home/root/tubix4_app/globlsystemsettings_default.xml")" 7
    check 'the factory pass phrase stands once' "$(grep -c 580294613 "$dir/etc/hostapd.conf")" 1
    # A unit comes up to date and keeps its state.
    unit meter 3.21
    echo mine >"$dir/home/root/tubix4_app/board.conf"
    rm "$dir/usr/bin/df"
    unit create
    check 'cable after a second create' "$(registers 4 2)" ' 1 65 '
    check 'board.conf after a second create' "$(cat "$dir/home/root/tubix4_app/board.conf")" mine
    check 'stand-in after a second create' "$(test -x "$dir/usr/bin/df" && echo there)" there

    mkdir "$work/other"
    touch "$work/other/precious"
    refused 1 'create in a folder that is no unit' --unit "$work/other" create
    check 'what lies in that folder' "$(ls -A "$work/other")" precious
    refused 1 'a command for a folder that is no unit' --unit "$work/other" meter 1
}

test_usage()
{
    refused 2 'no command' --unit "$dir"
    refused 2 'unknown command' --unit "$dir" fly
    refused 2 'unknown option' --unit "$dir" --fast meter 1
    refused 2 'missing value' --unit "$dir" battery
    refused 2 'unknown value' --unit "$dir" battery 81
    refused 2 'superfluous value' --unit "$dir" meter 1 2
    local value
    for value in 327.68 -1 1.234 1,5 x ''; do
        refused 2 "meter '$value'" --unit "$dir" meter "$value"
    done
    check 'help goes to standard output' "$(unit --help | head -c 6)" 'Usage:'
}

test_board()
{
    printf '\x02' | dd of="$dir/dev/i2c-4" bs=1 seek=6 conv=notrunc status=none
    unit meter 327.67
    check 'both counts; the algorithm stays' "$(registers 4 6)" ' 127 255 2 0 127 255 '
    unit meter 25.70 # bytes that look like line feeds
    check 'a count of two line feeds' "$(registers 4 6)" ' 10 10 2 0 10 10 '
    unit meter 0.5
    check 'one decimal is tens of centimetres' "$(registers 4 2)" ' 0 50 '

    unit battery empty
    check 'empty is below 650' "$(registers 2 2)" ' 2 88 '
    unit battery hot
    check 'hot is at most 83' "$(registers 11 2)" ' 0 60 '
    unit battery supply
    check 'supply' "$(registers 14 1)" ' 1 '
    unit battery 100
    check 'a charge is one of a cool battery without supply' "$(registers 2 2)$(registers 11 4)" ' 3 162  2 0 1 0 '
    unit battery lost
    check 'a lost board cannot be opened' "$(ls "$dir/dev")" video0
    unit meter 7
    unit battery back
    check 'a lost board keeps counting' "$(registers 4 2)" ' 2 188 '
    unit board skip
    check 'an access fails' "$(dd if="$dir/dev/i2c-4" bs=1 count=1 iflag=nonblock status=none 2>/dev/null | wc -c)" 0
    check 'the next one does not' "$(eventually test -f "$dir/dev/i2c-4" && registers 4 2)" ' 2 188 '
    unit board nonsense 11 255
    check 'a senseless register' "$(registers 11 1)" ' 255 '
    unit board back
    check 'a sensible one' "$(registers 11 1)" ' 2 '
    unit head mini
    check 'no equaliser lock with the mini module' "$(registers 10 1)" ' 0 '

    unit meter 0
    local others
    others="$(registers 0 4)$(registers 6 2)$(registers 10 5)"
    "$source_folder/simulator/unit" --unit "$dir" drive >"$work/out" &
    local moved=$! tries=0
    while [ "$(registers 4 2)" = ' 0 0 ' ] && [ $((tries += 1)) -lt 100 ]; do sleep 0.1; done
    unit battery lost
    unit battery back
    kill "$moved"
    wait "$moved"
    check 'drive moves the cable' "$([ "$(registers 4 2)" != ' 0 0 ' ] && echo moved)" moved
    check 'drive keeps the other registers' "$(registers 0 4)$(registers 6 2)$(registers 10 5)" "$others"
}

test_card()
{
    check 'an empty card' "$(card_line 2) $(card_line 3) $(card_line 4) $(card_line 5)" '7766016 0 7766016 0%'
    mkdir "$dir/media/mmcblk1p1/DCIM"
    head -c 3000000 /dev/urandom >"$dir/media/mmcblk1p1/DCIM/file"
    check 'what lies on the card is used' "$([ "$(card_line 3)" -ge 2929 ] && echo used)" used
    unit card full
    check 'a full card' "$([ "$(card_line 4)" -lt 10240 ] && echo full)" full
    check 'its parts add up' $(($(card_line 3) + $(card_line 4))) 7766016

    check 'removal in the kernel log' "$(batch card remove | grep -c 'mmc1: card.*removed')" 1
    check 'a removed card leaves the bare mount point' "$(ls -A "$dir/media/mmcblk1p1")$(card_line 1)" ''
    echo stray >"$dir/media/mmcblk1p1/stray"
    check 'insertion in the kernel log' "$(batch card insert | grep -c 'mmcblk1: p1')" 1
    check 'the card comes back as it was' "$(ls "$dir/media/mmcblk1p1/DCIM")" file
    check 'the error comes after the partition' \
        "$(batch card corrupt | grep -o 'mmcblk1: p1\|FAT read failed' | tr '\n' ,)" 'mmcblk1: p1,FAT read failed,'
    unit card empty
    check 'an emptied card' "$(ls -A "$dir/media/mmcblk1p1")$(card_line 3)" 0

    local before
    before=$(wc -c <"$messages")
    stand_in umount /media/mmcblk1p1
    check 'an unmounted card' "$(ls -A "$dir/media/mmcblk1p1")$(card_line 1)" stray
    check 'the kernel is silent about it' "$(wc -c <"$messages")" "$before"
    unit card insert
    check 'the card is mounted again' "$(card_line 6)" /media/mmcblk1p1
}

# eventually COMMAND...: true as soon as the command is.
eventually()
{
    local tries=0
    until "$@"; do
        [ $((tries += 1)) -lt 100 ] || return 1
        sleep 0.1
    done
}

test_late_mount()
{
    unit card remove
    unit card delay 0.5
    check 'the kernel tells of the card' "$(batch card insert | grep -c 'mmcblk1: p1')" 1
    check 'it is not yet mounted' "$(card_line 6)" ''
    unit card remove
    unit card insert
    check 'it mounts' "$(eventually test ! -e "$dir/.simulator/card" && card_line 6)" /media/mmcblk1p1
    check 'a card that never mounts: kernel' "$(batch card unmountable | grep -c 'mmcblk1: p1')" 1
    check 'a card that never mounts: df' "$(card_line 6)" ''
    unit card mountable
    check 'mounted after all' "$(card_line 6)" /media/mmcblk1p1
    unit card delay 0
}

# on_card COMMAND...: as a program under the library finds the card; says what went wrong.
on_card()
{
    (cd "$dir/media/mmcblk1p1" && LD_PRELOAD=$library "$@" 2>&1) | sed 's/.*: //'
}

test_card_faults()
{
    local file=$dir/media/mmcblk1p1/file
    unit card error ENOSPC once
    check 'no room for data' "$(on_card dd if=/dev/zero of="$file" bs=9 count=1 status=none)" 'No space left on device'
    check 'a name without data' "$(stat -c %s "$file")" 0
    check 'room again' "$(on_card dd if=/dev/zero of="$file" bs=9 count=1 status=none; stat -c %s "$file")" 9
    unit card readonly
    check 'read-only: a new file' "$(on_card dd of="$file.2" if=/dev/null)" 'Read-only file system'
    check 'read-only: a folder' "$(on_card mkdir "$file.2")" 'Read-only file system'
    check 'read-only: a name' "$(on_card mv "$file" "$file.2")" 'Read-only file system'
    check 'reading goes on' "$(on_card cat "$file" | wc -c)" 9
    check 'the rest of the unit can be written' "$(on_card mkdir "$dir/tmp/folder")" ''
    unit card writable
    unit card slow 9999
    check 'a slow write' "$(on_card timeout 0.3 dd if=/dev/zero of="$file.2" bs=9 count=1 status=none; stat -c %s "$file.2")" 0
    unit card slow 0
    # Opening is the first change, writing the second; the application's own folder counts as well.
    unit change 2 KILL
    check 'killed before the second change' "$(on_card dd if=/dev/zero of="$dir/home/root/tubix4_app/new" bs=9 count=1 \
        status=none || true; stat -c %s "$dir/home/root/tubix4_app/new")" 0
    unit change 1 EIO once
    check 'only the first write' "$(on_card dd if=/dev/zero of="$file" bs=9 count=1 status=none conv=notrunc,fsync)" ''
    unit change 2 EIO once
    check 'only the second' "$(on_card dd if=/dev/zero of="$file" bs=9 count=1 status=none)" 'Input/output error'
    unit change none
    rm "$dir/home/root/tubix4_app/new"
    refused 2 'a change without a number' --unit "$dir" change EIO
    unit card empty
}

test_devices()
{
    unit usb attach
    check 'the host is the 29th character' "$(head -c 29 "$dir/sys/class/extcon/ci_hdrc.0/state" | tail -c 1)" 1
    mkdir -p "$dir/media/mmcblk1p1/DCIM/day"
    unit usb move DCIM/day
    check 'a folder at the computer' "$(ls "$dir/media/mmcblk1p1/DCIM")" ''
    refused 1 'a folder that is not on the card' --unit "$dir" usb move ../../dev
    unit usb detach
    refused 1 'a folder without a computer' --unit "$dir" usb move DCIM
    check 'detached' "$(head -c 29 "$dir/sys/class/extcon/ci_hdrc.0/state" | tail -c 1)" 0
    unit camera lost
    check 'a lost camera' "$(test -e "$dir/dev/video0" || echo gone)" gone
    unit camera back
    check 'a camera that is back' "$(test -f "$dir/dev/video0" && echo there)" there
}

test_stand_ins()
{
    check 'the kernel release stands at 17 to 32' "$(stand_in uname -a | cut -c 18-33)" 4.1.15-tubix4-12
    "$dir/home/root/tubix4_app/infra.sh"
    check 'a client has joined a network' "$(stand_in iw wlan0 link | grep -c 'SSID: ')" 1
    "$dir/home/root/tubix4_app/hotspot.sh"
    check 'an access point has not' "$(stand_in iw wlan0 link | grep -c 'SSID: ')" 0
    check 'a time to set is printed' "$(stand_in date +%F '--s=2015-06-30 14:05:09')" 2015-06-30
    check 'an impossible date' "$(stand_in date +%F '--s=2015-02-30 14:05:09' 2>/dev/null || echo refused)" refused

    # A stale number that belongs to another process: this very test.
    echo $$ >"$dir/run/tubix4.pid"
    stand_in poweroff
    rm "$dir/run/tubix4.pid"
    check 'the call is recorded' "$(unit log | tail -n 1 | cut -d ' ' -f 2-)" poweroff
}

test_commands()
{
    unit command umount fail 1
    unit command df hang 0.1
    check 'a command that failed once' "$(stand_in umount x 2>&1 || true),$(stand_in umount x 2>&1 || true)" \
        'umount: Input/output error,umount: x: no mount point specified.'
    check 'a slow command still answers' "$(card_line 6)" /media/mmcblk1p1
    unit command df missing
    unit create
    check 'a missing command' "$(test -e "$dir/usr/bin/df" || echo gone)" gone
    unit command df nonsense
    check 'nonsense' "$(stand_in df | grep -c /dev/mmcblk1p1)" 0
    unit command df ok
    check 'a sound command' "$(card_line 6)" /media/mmcblk1p1
    refused 2 'a command that the unit does not have' --unit "$dir" command fly fail
    refused 2 'an impossible number of times' --unit "$dir" command df fail 0
}

test_rough()
{
    local sound
    unit command umount ok
    sound=$(unit status)
    unit rough
    unit board nonsense 11 0
    unit camera size 640x480
    unit card error EIO once
    unit command sync missing
    check 'rough: mount' "$(unit status | grep -c '2.5 s after')" 1
    unit smooth
    check 'smooth leaves nothing' "$(unit status)" "$sound"
}

# poweroff ends the application of this folder, no other one's. A shell under its name plays it.
test_poweroff()
{
    cp "$(command -v bash)" "$work/tubix4"
    # shellcheck disable=SC2016
    "$work/tubix4" -c 'while :; do sleep 0.1; done' tubix4 --root "$work" &
    local other=$!
    # shellcheck disable=SC2016
    "$work/tubix4" -c 'while :; do sleep 0.1; done' tubix4 --root "$dir" &
    local own=$!
    echo "$other" >"$dir/run/tubix4.pid"
    stand_in poweroff
    echo "$own" >"$dir/run/tubix4.pid"
    stand_in poweroff
    local status=0
    wait "$own" || status=$?
    check 'the application of this folder is ended' "$status" $((128 + 15))
    check 'the application of another folder lives' "$(kill -0 "$other" && echo lives)" lives
    kill "$other"
    wait "$other" || true
}

before=$(everything)
test_create
test_usage
test_board
test_card
test_late_mount
test_card_faults
test_devices
test_stand_ins
test_commands
test_rough
test_poweroff
check 'nothing else in the working folder' "$(find "$work" -mindepth 1 -maxdepth 1 -printf '%f\n' | sort | tr '\n' ' ')" \
    'err other out tubix4 unit '
check 'the source folder is untouched' "$(everything)" "$before"

if [ "$failures" -gt 0 ]; then
    echo "$failures checks failed"
    exit 1
fi
echo 'all checks passed'
