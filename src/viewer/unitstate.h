// What the unit shows to a program that stands beside the application: hotspot, addresses, card. Nothing is
// asked of the application.
#pragma once

#include <QString>

namespace viewer {

// An address of the unit and the network that it belongs to, in the byte order of the host; 0: none.
struct Subnet
{
    quint32 address = 0;
    quint32 mask = 0;

    bool holds(quint32 other) const { return address && (other & mask) == (address & mask); }
    bool operator==(const Subnet &) const = default;
};

QString dotted(quint32 address);

Subnet subnetOf(const QString &networkInterface);

// The setting that the application saved.
bool hotspotIsOn();

// The interface has joined a network of others: a mode script that failed leaves the setting at "hotspot".
// True as well where nobody can tell.
bool isInForeignNetwork(const QString &networkInterface);

// A card is mounted and no USB host has it.
bool cardIsOurs();

} // namespace viewer
