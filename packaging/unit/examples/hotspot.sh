#!/bin/sh
# wlan0 becomes an access point. For /home/root/tubix4_app/hotspot.sh; needs hostapd, dnsmasq-base, iproute2.
# The daemons run in units of their own, so that they outlive a restart of the application.
systemctl stop wpa_supplicant@wlan0.service
systemctl stop tubix4-hotspot.service tubix4-dhcp.service 2>/dev/null
ip address flush dev wlan0
ip address add 192.168.4.1/24 dev wlan0
ip link set wlan0 up
systemd-run --quiet --collect --unit=tubix4-hotspot hostapd /etc/hostapd.conf
systemd-run --quiet --collect --unit=tubix4-dhcp dnsmasq --keep-in-foreground --port=0 --interface=wlan0 \
    --bind-interfaces --dhcp-range=192.168.4.10,192.168.4.99,12h
