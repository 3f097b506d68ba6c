# What the stand-ins and the control tool share. POSIX sh, builtins and absolute host paths only: a stand-in
# runs with nothing but the unit's own command folder in its PATH. Expects `root`, the unit's folder.
# shellcheck shell=sh

# The simulation's own state lies beside the unit's file system, where the application never looks.
state=$root/.simulator
card=$root/media/mmcblk1p1  # the mounted card
card_aside=$state/card      # the same card while it is not mounted
card_size=7766016           # kilobytes of a card of 8 GB

# record NAME ARGUMENTS: one line for each call. It is the first that a stand-in does, so a command that the unit's
# dial has made fail ends here.
record()
{
    printf '%s %s\n' "$(/bin/date +%H:%M:%S)" "$*" >>"$root/var/log/commands"
    [ ! -f "$state/command_$1" ] || misbehave "$1"
}

# misbehave NAME: as `simulator/unit command NAME` was told.
misbehave()
{
    read -r how value <"$state/command_$1" || return 0
    case $how in
    hang) /bin/sleep "$value" >/dev/null 2>&1 ;;
    nonsense)
        printf '\377\376\033[%%s -1 /dev/\t\t99999999999999999999%% \001NaN\n\n'
        exit 0
        ;;
    fail)
        case $value in
        '') ;;
        1) /bin/rm -f "$state/command_$1" ;;
        *) keep "command_$1" "fail $((value - 1))" ;;
        esac
        echo "$1: Input/output error" >&2
        exit 1
        ;;
    esac
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
    [ ! -d "$card_aside" ]
}

# The folder goes as a whole, so that nobody finds half a card. What stays is the bare mount point, a folder of the
# root file system that can be written to.
card_unmount()
{
    /bin/mv "$card" "$card_aside"
    [ ! -d "$state/mount_point" ] || /bin/mv -T "$state/mount_point" "$card"
    /bin/mkdir -p "$card"
    tell_mounts
}

# What was written to the bare mount point meanwhile is hidden until the card goes.
card_mount()
{
    until /bin/mv -T "$card_aside" "$card" 2>/dev/null; do
        [ -d "$card_aside" ] && /bin/mv -T "$card" "$state/mount_point" || return 1
    done
    tell_mounts
}

# The system's table of mounts.
tell_mounts()
{
    set -- '/dev/root / ext4 rw,relatime 0 0' 'tmpfs /run tmpfs rw,nosuid,nodev 0 0'
    ! card_is_mounted || set -- "$@" '/dev/mmcblk1p1 /media/mmcblk1p1 vfat rw,relatime 0 0'
    printf '%s\n' "$@" >"$root/proc/mounts.new" && /bin/mv -f "$root/proc/mounts.new" "$root/proc/mounts"
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
