# shellcheck shell=bash
# The encoder board and what is wired to it. Part of the control tool `unit`, which sources it.

# The register file, or where it waits while the board does not answer.
register_file()
{
    if [ -f "$state/i2c-4" ]; then
        printf '%s' "$state/i2c-4"
    else
        printf '%s' "$root/dev/i2c-4"
    fi
}

# registers: reads all fifteen into `register`.
registers()
{
    read -r -a register < <(od -An -v -tu1 -w16 "$(register_file)")
}

# poke FIRST VALUE...: successive registers in one write.
poke()
{
    local first=$1 bytes=
    shift
    printf -v bytes '\\x%02x' "$@"
    # shellcheck disable=SC2059
    printf "$bytes" |
        dd of="$(register_file)" bs=$# seek="$first" iflag=fullblock oflag=seek_bytes conv=notrunc status=none
}

length()
{
    printf '%d.%02d' $(($1 / 100)) $(($1 % 100))
}

meter()
{
    expect 1 "$@"
    local count register
    [[ $1 =~ ^([0-9]{1,3})(\.([0-9]{0,2}))?$ ]] || misused "meter: '$1' is no length in metres; 0.00 to 327.67"
    local fraction=${BASH_REMATCH[3]:-}00
    count=$((10#${BASH_REMATCH[1]} * 100 + 10#${fraction:0:2}))
    [ "$count" -le 32767 ] || misused "meter: '$1' is out of range; 0.00 to 327.67"
    registers
    # Registers 6 and 7, between the two counts, keep what the application wrote.
    poke 4 $((count >> 8)) $((count & 255)) "${register[6]}" "${register[7]}" $((count >> 8)) $((count & 255))
}

# Moves the cable ten times a second at up to 30 cm a second, from one end of the path to the other and back,
# with a rest at either end. Builtins only, one process.
drive()
{
    expect 0 "$@"
    local register count left speed=0 step=1 rest=0 low=0 high=2500
    registers
    count=$((register[4] * 256 + register[5]))
    [ "$count" -le "$high" ] || { low=2500 high=$count step=-1; }
    printf 'Pushing and pulling between %s m and %s m; Ctrl+C ends it.\n' "$(length $low)" "$(length $high)"
    trap 'exit 0' INT TERM
    # File 9 never has anything to read: a wait without a process. File 8 stays the board, lost or not.
    exec 9<> <(:)
    exec 8<>"$(register_file)"
    while true; do
        read -r -t 0.1 -u 9 || true
        [ -d "$state" ] || fail "$root is gone"
        if [ "$rest" -gt 0 ]; then
            rest=$((rest - 1))
            continue
        fi
        # The way that is left: the cable slows down before it stops.
        left=$((step > 0 ? high - count : count - low))
        if [ "$left" -le 0 ]; then
            step=$((-step)) speed=0 rest=15
            continue
        fi
        speed=$((speed < 3 ? speed + 1 : 3))
        [ "$left" -gt 6 ] || speed=1
        count=$((count + step * speed))
        turn "$count"
    done
}

# turn COUNT: what meter does, without another process. Opening the board anew is the way to its start. Bash
# writes up to a line feed at a time: the byte that looks like one is stepped over.
turn()
{
    local count=$1 bytes algorithm mode
    [ $((count & 255)) -ne 10 ] || count=$((count + 1))
    exec 7<>/proc/self/fd/8
    skip 6
    IFS= read -r -d '' -n 1 -u 7 algorithm || true
    IFS= read -r -d '' -n 1 -u 7 mode || true
    exec 7<>/proc/self/fd/8
    skip 4
    printf -v bytes '\\x%02x' $((count >> 8)) $((count & 255)) "'$algorithm" "'$mode" \
        $((count >> 8)) $((count & 255))
    # shellcheck disable=SC2059
    printf "$bytes" >&7
    exec 7>&-
}

# skip COUNT: moves on in file 7 by that many bytes.
skip()
{
    local at
    for ((at = 0; at < $1; at++)); do
        IFS= read -r -d '' -n 1 -u 7 || true
    done
}

# The readings are those that board firmware 0x61 is graded by: the battery's in registers 2 and 3, the
# temperature's, which falls as the battery warms, in 11 and 12, the supply in 14.
charge()
{
    poke 2 $(($1 >> 8)) $(($1 & 255))
}

temperature()
{
    poke 11 $(($1 >> 8)) $(($1 & 255))
}

supply()
{
    poke 14 "$1"
}

battery()
{
    expect 1 "$@"
    case $1 in
    100) charge 930 ;;
    80) charge 880 ;;
    60) charge 835 ;;
    40) charge 810 ;;
    20) charge 720 ;;
    low) charge 655 ;;
    empty) charge 600 ;;
    ok) board_back && charge 880 ;;
    warm) temperature 150 ;;
    hot) temperature 60 ;;
    supply) supply 1 ;;
    lost | back)
        "board_$1"
        return
        ;;
    *)
        misused "battery: unknown value '$1'; 100, 80, 60, 40, 20, low, empty, warm, hot, supply, ok, lost, back"
        ;;
    esac
    # One thing at a time: the charge counts on a cool battery without supply.
    [[ $1 == warm || $1 == hot ]] || temperature 512
    [ "$1" = supply ] || supply 0
}

board_lost()
{
    [ -f "$state/i2c-4" ] || mv "$root/dev/i2c-4" "$state/i2c-4"
    rm -f "$root/dev/i2c-4"
}

# The board answers again, with what it means.
board_back()
{
    local number value
    [ ! -f "$state/i2c-4" ] || mv -f "$state/i2c-4" "$root/dev/i2c-4"
    registers
    for number in {0..14}; do
        value=$(kept "board_nonsense_$number" '')
        [ "${value% *}" != "${register[number]}" ] || poke "$number" "${value#* }"
        rm -f "$state/board_nonsense_$number"
    done
}

# One access fails: a pipe in the board's place is opened like a bus device and answers nothing. Whoever opens it
# lets the writer go on, who puts the board back.
board_skip()
{
    [ -f "$root/dev/i2c-4" ] || fail 'the board does not answer as it is'
    mkfifo "$state/i2c-4.skip"
    ln "$root/dev/i2c-4" "$state/i2c-4"
    mv -f "$state/i2c-4.skip" "$root/dev/i2c-4"
    {
        # shellcheck disable=SC2016
        timeout 10 bash -c ': >"$1"' - "$root/dev/i2c-4" || true
        [ ! -p "$root/dev/i2c-4" ] || mv -f "$state/i2c-4" "$root/dev/i2c-4"
    } </dev/null >/dev/null 2>&1 &
}

# board_nonsense REGISTER VALUE: until somebody writes it, or the board is back.
board_nonsense()
{
    local register before
    [[ $1 =~ ^[0-9]{1,2}$ && $((10#$1)) -le 14 ]] || misused "board: '$1' is no register; 0 to 14"
    [[ $2 =~ ^[0-9]{1,3}$ && $((10#$2)) -le 255 ]] || misused "board: '$2' is no register's value; 0 to 255"
    registers
    before=$(kept "board_nonsense_$((10#$1))" "0 ${register[10#$1]}")
    keep "board_nonsense_$((10#$1))" "$((10#$2)) ${before#* }"
    poke "$((10#$1))" "$((10#$2))"
}

encoder_board()
{
    case ${1:-} in
    nonsense)
        expect 3 "$@"
        board_nonsense "$2" "$3"
        ;;
    *)
        expect 1 "$@"
        case $1 in
        lost | back | skip) "board_$1" ;;
        *) misused "board: unknown value '$1'; lost, back, skip, nonsense" ;;
        esac
        ;;
    esac
}

head_attached()
{
    expect 1 "$@"
    case $1 in
    60) poke 10 1 && poke 13 1 && decoder 0x45 ;;
    30) poke 10 1 && poke 13 0 && decoder 0x45 ;;
    mini) poke 10 0 && poke 13 0 && decoder 0x45 ;;
    none) poke 10 0 && poke 13 0 && decoder 0x02 ;;
    *) misused "head: unknown value '$1'; 60, 30, mini, none" ;;
    esac
}
