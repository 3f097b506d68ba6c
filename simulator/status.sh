# shellcheck shell=bash
# What there is to see of a unit. Part of the control tool `unit`, which sources it.

nonsense_text()
{
    local number
    for number in {0..14}; do
        [ ! -f "$state/board_nonsense_$number" ] || printf ', register %d is nonsense' "$number"
    done
}

battery_text()
{
    local reading=$((register[2] * 256 + register[3])) warmth=$((register[11] * 256 + register[12])) grade
    if [ "$warmth" -le 83 ]; then
        grade='too hot'
    elif [ "$warmth" -le 193 ]; then
        grade='too warm'
    elif [ "${register[14]}" = 1 ]; then
        grade='external supply'
    elif [ "$reading" -lt 650 ]; then
        grade=empty
    else
        grade=20%
        [ "$reading" -le 798 ] || grade=40%
        [ "$reading" -le 822 ] || grade=60%
        [ "$reading" -le 849 ] || grade=80%
        [ "$reading" -le 912 ] || grade=100%
    fi
    printf '%s (battery %d, temperature %d)' "$grade" "$reading" "$warmth"
}

head_text()
{
    local status
    status=$(cat "$root/$decoder_file")
    if [ "${register[10]}" -ne 0 ]; then
        [ "${register[13]}" -ne 0 ] && echo '60 m reel' || echo '30 m reel'
    elif ((status & 1)); then
        echo 'mini module'
    else
        echo none
    fi
}

camera_text()
{
    local text
    text=$(kept camera_signal present)
    [ -f "$root/dev/video0" ] || text=lost
    printf '%s, %s, %s, first picture after %s s' "$text" "$(kept camera_view pipe)" \
        "$(kept camera_size 720x576)" "$(kept camera_delay 0)"
}

mount_text()
{
    local delay
    delay=$(kept card_mount 0)
    [ "$delay" = never ] && echo never || echo "$delay s after the kernel's lines"
}

application_text()
{
    local pid=
    [ ! -f "$root/run/tubix4.pid" ] || read -r pid <"$root/run/tubix4.pid" || true
    if [ -n "$pid" ] && [ -d "/proc/$pid" ]; then
        echo "running (process $pid)"
    else
        echo 'not running'
    fi
}

row()
{
    printf '%-12s %s\n' "$1" "$2"
}

show_status()
{
    expect 0 "$@"
    local register usb_text=detached board_text=answering offered
    registers
    ! usb_is_attached || usb_text=attached
    [ -f "$root/dev/i2c-4" ] || board_text='not answering'
    offered=$(kept mass_storage '')
    row unit "$root"
    row application "$(application_text)"
    row board "$board_text, firmware $(printf '0x%x' "${register[1]}")$(nonsense_text)"
    row cable "$(length $((register[4] * 256 + register[5]))) m, algorithm ${register[6]}"
    row battery "$(battery_text)"
    row head "$(head_text)"
    row camera "$(camera_text)"
    row 'LED' "brightness $(cat "$root/$led_file")"
    row backlight "$(cat "$root/$lcd_file")"
    row card "$(card_status)"
    row 'card mount' "$(mount_text)"
    row 'card writes' "$(kept card_slow 0) ms each, $(kept card_error 'no error')"
    row usb "$usb_text${offered:+, mass storage offered}"
    row commands "$(stand_ins_text)"
    row wifi "$(kept wifi hotspot)"
}

show_log()
{
    expect 0 "$@"
    cat "$root/var/log/commands"
}
