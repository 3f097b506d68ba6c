# shellcheck shell=bash
# The card. Part of the control tool `unit`, which sources it.

inserted_lines=(
    'mmc1: new high speed SDHC card at address b368'
    'mmcblk1: mmc1:b368 SD08G 7.41 GiB '
    ' mmcblk1: p1'
)
removed_line='mmc1: card b368 removed'
damaged_lines=(
    'FAT-fs (mmcblk1p1): FAT read failed (blocknr 3584)'
    'FAT-fs (mmcblk1p1): error, fat_free_clusters: deleting FAT entry beyond EOF'
    'FAT-fs (mmcblk1p1): Filesystem has been set read-only'
)

# The card's folder, wherever it is.
card_folder()
{
    if card_is_mounted; then
        printf '%s' "$card"
    else
        printf '%s' "$card_aside"
    fi
}

card_insert()
{
    [ "$(kept slot in)" = out ] || ! card_is_mounted || return 0
    # A card that is in the slot without a mount is pulled and put in again.
    [ "$(kept slot in)" = out ] || kernel "$removed_line"
    keep slot in
    keep health good
    case $(kept card_mount 0) in
    never)
        rm -f "$state/mounting"
        kernel "${inserted_lines[@]}"
        ;;
    *[1-9]*)
        card_mount_later "$(kept card_mount 0)"
        kernel "${inserted_lines[@]}"
        ;;
    *)
        card_mount
        kernel "${inserted_lines[@]}"
        ;;
    esac
}

# card_mount_later SECONDS: unless the card is pulled meanwhile, or the unit's folder goes.
card_mount_later()
{
    local insertion=$EPOCHREALTIME
    keep mounting "$insertion"
    {
        sleep "$1"
        [ "$(kept mounting '')" != "$insertion" ] || { card_mount && rm -f "$state/mounting"; }
    } </dev/null >/dev/null 2>&1 &
}

card_remove()
{
    [ "$(kept slot in)" = in ] || return 0
    keep slot out
    rm -f "$state/mounting" "$state/mass_storage"
    ! card_is_mounted || card_unmount
    kernel "$removed_line"
}

card_delay()
{
    seconds "$1" 10
    keep card_mount "$1"
}

# Puts in a card that no file system driver knows, in place of the one that is in.
card_unmountable()
{
    card_remove
    keep card_mount never
    card_insert
}

# The card is mounted after all; the kernel has no line about it.
card_mountable()
{
    [ "$(kept card_mount 0)" = never ] || return 0
    rm -f "$state/card_mount"
    [ "$(kept slot in)" = out ] || card_is_mounted || card_mount
}

card_slow()
{
    [[ $1 =~ ^[0-9]{1,4}$ ]] || misused "card slow: '$1' is no time in milliseconds; 0 to 9999"
    keep card_slow "$((10#$1))"
}

# card_error EIO|ENOSPC|EROFS|none [once]
card_error()
{
    case $1 in
    none) expect 1 "$@" && rm -f "$state/card_error" ;;
    EIO | ENOSPC | EROFS)
        [ "${*:2}" = once ] || expect 1 "$@"
        keep card_error "$*"
        ;;
    *) misused "card error: unknown value '$1'; EIO, ENOSPC, EROFS, none" ;;
    esac
}

# change N EIO|ENOSPC|EROFS|KILL [once]
change()
{
    rm -f "$state/change_fault" "$state/changes"
    [ "${1:-}" != none ] || { expect 1 "$@" && return; }
    [[ ${1:-} =~ ^[0-9]{1,5}$ ]] || misused "change: '${1:-}' is no number of a change; 0 to 99999"
    case ${2:-} in
    EIO | ENOSPC | EROFS | KILL) ;;
    *) misused "change: unknown value '${2:-}'; EIO, ENOSPC, EROFS, KILL" ;;
    esac
    [ "${3:-}" = once ] || expect 2 "$@"
    keep change_fault "$*"
}

card_corrupt()
{
    local lines=(' mmcblk1: p1')
    rm -f "$state/mounting"
    card_is_mounted || card_mount
    [ "$(kept slot in)" = in ] || lines=("${inserted_lines[@]}")
    keep slot in
    keep health damaged
    kernel "${lines[@]}" "${damaged_lines[@]}"
}

card_full()
{
    keep filler 0
    card_usage "$(card_folder)"
    keep filler $((available > 5120 ? available - 5120 : 0))
}

card_empty()
{
    find "$(card_folder)" -mindepth 1 -delete
    keep filler 0
    keep health good
}

card_status()
{
    local folder
    folder=$(card_folder)
    card_usage "$folder"
    printf '%s, %s; %d of %d KB used, %d KB free (%d%%); %d files\n' "$(card_place)" "$(kept health good)" \
        "$used" "$card_size" "$available" "$percent" "$(find "$folder" -type f | wc -l)"
}

card_place()
{
    if [ "$(kept slot in)" = out ]; then
        echo 'out of the slot'
    elif card_is_mounted; then
        echo inserted
    else
        echo 'in the slot, not mounted'
    fi
}

sd_card()
{
    case ${1:-} in
    delay | slow)
        expect 2 "$@"
        "card_$1" "$2"
        ;;
    error)
        [ $# -ge 2 ] || misused "card error needs a value; see $tool --help"
        card_error "${@:2}"
        ;;
    *)
        expect 1 "$@"
        case $1 in
        readonly) card_error EROFS ;;
        writable) card_error none ;;
        insert | remove | corrupt | full | empty | status | unmountable | mountable) "card_$1" ;;
        *) misused "card: unknown value '$1'; see $tool --help" ;;
        esac
        ;;
    esac
}
