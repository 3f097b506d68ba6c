#!/bin/bash
# powercut_test.sh PROGRAM WORK: the power goes while PROGRAM (test_app_films) records onto a card of its own; at
# most two seconds of the film may be missing. The card is an image, mounted through a loop device and shut down
# without a flush. Exit status 77 (skipped) without root or without loop mounts.
set -u
program=$1 work=$(mktemp -d "$2/powercut.XXXXXX")
recorder=

leave()
{
    [ -z "$recorder" ] || kill -9 "$recorder" 2>/dev/null
    mountpoint -q "$work/card" && umount "$work/card"
    rm -rf "$work"
    exit "$1"
}
skip()
{
    echo "skipped: $1"
    leave 77
}

[ "$(id -u)" = 0 ] || skip 'not root'
truncate -s 200M "$work/image"
mkfs.ext4 -q "$work/image" 2>/dev/null || skip 'no mkfs.ext4'
mkdir "$work/card"
mount -o loop "$work/image" "$work/card" 2>/dev/null || skip 'no loop mount'
sync -f "$work/card"

TMPDIR=$work/card "$program" --record >/dev/null 2>&1 &
recorder=$!
film=
deadline=$((SECONDS + 120)) # a loaded machine takes its time
while [ "$SECONDS" -lt "$deadline" ]; do
    sleep 0.1
    film=$(find "$work/card" -name TUBX0001.avi -size +0 2>/dev/null | head -n 1)
    [ -z "$film" ] || break
done
[ -n "$film" ] || { echo 'no film was begun'; leave 1; }
while [ "$(stat -c %s "$film")" -lt 3000000 ] && [ "$SECONDS" -lt "$deadline" ]; do
    sleep 0.1
done

# What had been recorded is what a reader saw until now, whatever of it is on the card.
cp "$film" "$work/seen.avi"
# The file system is shut down where it stands (EXT4_IOC_SHUTDOWN, no flush): what the kernel still holds is lost.
python3 -c 'import fcntl, os, struct, sys
fcntl.ioctl(os.open(sys.argv[1], os.O_RDONLY), 0x8004587d, struct.pack("I", 2))' "$work/card" ||
    skip 'the file system cannot be shut down'
kill -9 "$recorder"
wait "$recorder" 2>/dev/null
recorder=
if ! umount "$work/card" || ! mount -o loop "$work/image" "$work/card"; then
    echo "not mountable"
    leave 1
fi

for each in "$work/seen.avi" "$film"; do
    "$program" --repair "$each" || { echo "no film to repair: $each"; leave 1; }
done
seconds()
{
    ffprobe -v error -select_streams v -show_entries stream=duration -of csv=p=0 "$1"
}
recorded=$(seconds "$work/seen.avi")
kept=$(seconds "$film")
errors=$(ffmpeg -nostdin -v error -i "$film" -f null - 2>&1)
echo "recorded $recorded s, kept $kept s"
[ -z "$errors" ] || { echo "$errors"; leave 1; }
awk "BEGIN { exit !($recorded - $kept <= 2) }" && leave 0
leave 1
