# shellcheck shell=bash
# A rough unit and a smooth one. Part of the control tool `unit`, which sources it.

rough()
{
    expect 0 "$@"
    keep camera_delay 0.8
    keep card_mount 2.5
    keep card_slow 50
    stand_in df hang 0.3
    stand_in umount fail 1
}

# Takes every dial back: what fails, what is late, what is senseless. Cable, battery, head and card stay as they are.
smooth()
{
    local file
    expect 0 "$@"
    camera back
    card_mountable
    board_back
    for file in "$state"/missing_*; do
        [ ! -f "$file" ] || mv "$file" "$root/usr/bin/${file##*/missing_}"
    done
    rm -f "$state"/camera_* "$state"/command_* "$state"/card_{mount,slow,error} "$state"/change*
}
