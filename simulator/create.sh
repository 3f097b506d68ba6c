# shellcheck shell=bash
# What a new unit holds. Part of the control tool `unit`, which sources it; every function adds what is missing
# and leaves what is there, so that an existing unit comes up to date without losing its state.

create()
{
    expect 0 "$@"
    if [ -e "$root" ] && [ ! -f "$state/version" ]; then
        [ -d "$root" ] || fail "$root is no folder"
        [ -z "$(ls -A "$root")" ] || fail "$root is not empty and no unit: it stays as it is"
    fi
    mkdir -p "$state"
    put "$state/version" <<<1
    create_folders
    create_commands
    create_devices
    create_network
    found etc/default/tubix4-viewer || viewer on
    create_logs
    create_application
}

create_folders()
{
    local folder
    for folder in dev etc/default home/root/tubix4_app/damagecatelog media proc run tmp usr/bin usr/lib/simulator \
        var/log; do
        mkdir -p "$root/$folder"
    done
    for folder in "$decoder_file" "$extcon_file" "$lcd_file" "$led_file"; do
        mkdir -p "$root/$(dirname "$folder")"
    done
    mkdir -p "$card"
    tell_mounts
}

# The stand-ins are always brought up to date. tar, openssl and ffmpeg are the real ones, behind a record.
create_commands()
{
    local file program
    put "$root/usr/lib/simulator/common.sh" <"$here/common.sh"
    for file in "$here"/commands/*; do
        create_command "$(basename "$file")" <"$file"
    done
    for program in tar openssl ffmpeg; do
        file=$(command -v "$program" || true)
        [ -z "$file" ] || create_command "$program" <<TEXT
#!/bin/sh
root=\${0%/usr/bin/*}
. "\$root/usr/lib/simulator/common.sh"
record $program "\$@"
exec $file "\$@"
TEXT
    done
}

# create_command NAME: one that is missing by the unit's dial stays so.
create_command()
{
    local place=$root/usr/bin/$1
    [ ! -f "$state/missing_$1" ] || place=$state/missing_$1
    put "$place" 755
}

create_devices()
{
    if ! found dev/i2c-4 && [ ! -f "$state/i2c-4" ]; then
        # Busy flag, firmware 0x61, battery 880 (about 80 %), meter count 0, algorithm 1, black and white off,
        # encoder count 0, equaliser locked, temperature 512, 60 m cable, no supply.
        printf '\x00\x61\x03\x70\x00\x00\x01\x00\x00\x00\x01\x02\x00\x01\x00' | put "$root/dev/i2c-4"
    fi
    found dev/video0 || [ -f "$state/video0" ] || put "$root/dev/video0" </dev/null
    found "$decoder_file" || decoder 0x45
    found "$extcon_file" || extcon 0
    found "$lcd_file" || put "$root/$lcd_file" <<<7
    found "$led_file" || put "$root/$led_file" <<<0
}

create_network()
{
    found etc/hostapd.conf || put "$root/etc/hostapd.conf" <<'TEXT'
# Access point of the inspection camera
interface=wlan0
driver=nl80211
ctrl_interface=/var/run/hostapd
ssid=TUBIX4-3A5C1E
country_code=DE
hw_mode=g
channel=6
ieee80211n=1
wmm_enabled=1
max_num_sta=4
auth_algs=1
ignore_broadcast_ssid=0
wpa=2
wpa_key_mgmt=WPA-PSK
rsn_pairwise=CCMP
wpa_passphrase=580294613
TEXT
    create_mode_script hotspot
    create_mode_script infra
}

# create_mode_script MODE: notes the mode, by which ifconfig and iw answer.
create_mode_script()
{
    put "$root/home/root/tubix4_app/$1.sh" 755 <<TEXT
#!/bin/sh
root=\${0%/home/root/tubix4_app/*}
. "\$root/usr/lib/simulator/common.sh"
record $1.sh "\$@"
keep wifi $1
TEXT
}

create_logs()
{
    found var/log/commands || put "$root/var/log/commands" </dev/null
    found var/log/messages && return
    put "$root/var/log/messages" </dev/null
    kernel 'Booting Linux on physical CPU 0x0' \
        'Linux version 4.1.15-tubix4-12 (gcc version 5.3.0) #1 SMP PREEMPT Tue Jun 30 09:12:44 UTC 2015' \
        'CPU: ARMv7 Processor [412fc09a] revision 10 (ARMv7), cr=10c5387d' \
        'Memory: 1009448K/1048576K available' \
        'i2c i2c-4: encoder board at 0x67' \
        'adv7180 2-0020: chip found @ 0x20, PAL BGHID' \
        'mmc1: SDHCI controller using ADMA' \
        "${inserted_lines[@]}" \
        'EXT4-fs (mmcblk3p2): mounted filesystem with ordered data mode' \
        'IPv6: ADDRCONF(NETDEV_UP): wlan0: link is not ready'
}

create_application()
{
    local home=$root/home/root/tubix4_app file
    found home/root/tubix4_app/globlsystemsettings_default.xml ||
        put "$home/globlsystemsettings_default.xml" <"$here/../resources/globlsystemsettings_default.xml"
    found home/root/tubix4_app/systemimagerconfiguration.txt ||
        printf 'ImagerConfiguration, 60\nMiniModulePresent, 1\n' | put "$home/systemimagerconfiguration.txt"
    # What fills the media roles on a desk. In a quoted value a quote is written \".
    found home/root/tubix4_app/board.conf || put "$home/board.conf" <<'TEXT'
[roles]
camera="pipecamera device=\"${root}/dev/video0\""
display=fakesink sync=true
converter=videoconvert
jpegencoder=videobalance name=fullrange ! jpegenc
mp3encoder=lamemp3enc ! mpegaudioparse
microphone=audiotestsrc is-live=true wave=sine freq=440 volume=0.1
speaker=fakesink sync=true
TEXT
    for file in "$here"/../resources/damagecatelog/*.txt; do
        [ ! -f "$file" ] || found "home/root/tubix4_app/damagecatelog/$(basename "$file")" ||
            put "$home/damagecatelog/$(basename "$file")" <"$file"
    done
}
