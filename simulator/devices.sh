# shellcheck shell=bash
# What hangs on sysfs, the USB port and the capture device. Part of the control tool `unit`, which sources it.

decoder_file=sys/devices/soc0/soc.1/2100000.aips-bus/21a8000.i2c/i2c-2/2-0020/adv7180_reg
extcon_file=sys/class/extcon/ci_hdrc.0/state
lcd_file=sys/class/backlight/backlight_lcdgrp.26/brightness
led_file=sys/class/backlight/extledcontrol.27/brightness

# decoder VALUE: the first status register of the video decoder; bit 0 says that it is locked to a picture.
decoder()
{
    put "$root/$decoder_file" <<<"$1"
}

# extcon 0|1: the host cable's value is the 29th character.
extcon()
{
    printf 'USB=%d\nSDP=%d\nDOCK=0\nUSB-HOST=%d\n' "$1" "$1" "$1" | put "$root/$extcon_file"
}

usb()
{
    [ "${1:-}" = move ] || expect 1 "$@"
    case $1 in
    attach) extcon 1 ;;
    detach) extcon 0 ;;
    move)
        expect 2 "$@"
        usb_move "$2"
        ;;
    *) misused "usb: unknown value '$1'; attach, detach, move" ;;
    esac
}

usb_is_attached()
{
    [ "$(tr -d '\n' <"$root/$extcon_file" | tail -c 1)" != 0 ]
}

# usb_move FOLDER: the computer takes a folder of the card for itself, and finds room for a second one of that name.
usb_move()
{
    local folder
    folder=$(card_folder)
    usb_is_attached || fail 'no computer at the USB port; usb attach connects one'
    if [[ /$1/ == */../* || ! -d $folder/$1 || -z ${1//[.\/]/} ]]; then
        fail "no folder '$1' on the card"
    fi
    mkdir -p "$state/computer/$(dirname "$1")"
    mv --backup=numbered -T "$folder/$1" "$state/computer/$1"
}

# What the pipe camera finds in its files: the delay counts at the next start of a pipeline, and so does the size.
camera()
{
    [ "${1:-}" = delay ] || [ "${1:-}" = size ] || expect 1 "$@"
    case $1 in
    lost) [ -f "$state/video0" ] || mv "$root/dev/video0" "$state/video0" ;;
    back)
        [ ! -f "$state/video0" ] || mv "$state/video0" "$root/dev/video0"
        rm -f "$state/camera_signal"
        ;;
    silent) keep camera_signal silent ;;
    freeze) keep camera_signal frozen ;;
    delay)
        expect 2 "$@"
        seconds "$2" 5
        keep camera_delay "$2"
        ;;
    chart) keep camera_view chart ;;
    pipe) rm -f "$state/camera_view" ;;
    size)
        expect 2 "$@"
        camera_size "$2"
        ;;
    *) misused "camera: unknown value '$1'; lost, silent, freeze, back, delay, chart, pipe, size" ;;
    esac
}

# Colour samples lie on every second pixel: both numbers are even.
camera_size()
{
    [[ $1 =~ ^([1-9][0-9]{2,3})x([1-9][0-9]{2,3})$ ]] || misused "camera size: '$1' is no size; 160x120 to 1920x1080"
    local width=${BASH_REMATCH[1]} height=${BASH_REMATCH[2]}
    ((width >= 160 && width <= 1920 && height >= 120 && height <= 1080 && width % 2 == 0 && height % 2 == 0)) ||
        misused "camera size: '$1' is out of range; even numbers, 160x120 to 1920x1080"
    keep camera_size "$1"
}
