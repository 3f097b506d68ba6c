# What the stand-ins and the control tool share. POSIX sh, builtins and absolute host paths only: a stand-in
# runs with nothing but the unit's own command folder in its PATH. Expects `root`, the unit's folder.
# shellcheck shell=sh

# The simulation's own state lies beside the unit's file system, where the application never looks.
state=$root/.simulator
card=$root/media/mmcblk1p1  # the mounted card
card_aside=$state/card      # the same card while it is not mounted
card_size=7766016           # kilobytes of a card of 8 GB

# record NAME ARGUMENTS: one line for each call.
record()
{
    printf '%s %s\n' "$(/bin/date +%H:%M:%S)" "$*" >>"$root/var/log/commands"
}

# keep NAME VALUE: a value of the state, replaced as a whole.
keep()
{
    printf '%s\n' "$2" >"$state/$1.new" && /bin/mv -f "$state/$1.new" "$state/$1"
}

# kept NAME DEFAULT: prints the value.
kept()
{
    value=$2
    [ ! -f "$state/$1" ] || read -r value <"$state/$1" || :
    printf '%s\n' "$value"
}

card_is_mounted()
{
    [ -d "$card" ] && [ ! -d "$card_aside" ]
}

# The folder goes as a whole, so that nobody finds half a card.
card_unmount()
{
    /bin/mv "$card" "$card_aside"
}

# What was written to the bare mount point meanwhile is hidden by a mount; here it goes.
card_mount()
{
    [ ! -d "$card" ] || /bin/rm -rf "$card"
    /bin/mv "$card_aside" "$card"
}

# card_usage FOLDER: sets used, available and percent (kilobytes, as df prints them).
# shellcheck disable=SC2034 # for whoever calls
card_usage()
{
    used=$(kept filler 0)
    set -- "$1" "$1"/* "$1"/.[!.]*
    if [ -e "$2" ] || [ -e "$3" ]; then
        lying=$(/usr/bin/du -sk "$1")
        used=$((used + ${lying%%[!0-9]*}))
    fi
    [ "$used" -le "$card_size" ] || used=$card_size
    available=$((card_size - used))
    percent=$(((used * 100 + card_size - 1) / card_size))
}
