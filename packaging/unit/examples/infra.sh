#!/bin/sh
# wlan0 becomes a client of a network that exists. For /home/root/tubix4_app/infra.sh; needs wpasupplicant with
# /etc/wpa_supplicant/wpa_supplicant-wlan0.conf, and systemd-networkd or another DHCP client for wlan0.
# The application waits for this script at its start: without --no-block a missing wlan0 would hold it for 90 s.
systemctl stop tubix4-hotspot.service tubix4-dhcp.service 2>/dev/null
ip address flush dev wlan0
systemctl --no-block start wpa_supplicant@wlan0.service
