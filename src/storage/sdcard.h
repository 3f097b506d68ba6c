// Is a card in the slot, and how full is it? Every answer asks "df" anew. GUI thread.
#pragma once

#include "platform/unit.h"

#include <QByteArray>
#include <QString>

inline const UnitPath kCardMountPoint = u"/media/mmcblk1p1"_unit;
inline constexpr quint64 kLeastAvailable = 10240; // kilobytes: below that the card counts as full
inline const UnitPath kCardDevice = u"/dev/mmcblk1p1"_unit;

struct sSDcardInfo
{
    qint8 statechanged = 0;
    quint8 inserted = 0;
    quint64 size = 0;  // kilobytes
    quint64 free = 0;  // kilobytes in use, despite its name
    quint64 avail = 0; // kilobytes
    quint8 percentFull = 0;
};
typedef sSDcardInfo tSDcardInfo;

extern tSDcardInfo SDCardInfo; // written by the functions below

// The card's figures out of a report of "df" (device, size, used, available, use percentage); a long device
// name may stand on a line of its own. All zero when the card is not in it. `statechanged` stays 0.
sSDcardInfo cardInDfReport(const QString &report);

// True when the system's table of mounts names the card at its place. Cheap: no command is run.
bool mountTableShowsCard();

// Mounts the card as the system does when it is pushed in: a host that went without a word has left it to be
// checked. Waits for that, 35 s at most; mountTableShowsCard() tells what came of it.
void mountCard();

void getSDCardInfo();     // refreshes all but statechanged
bool isDiskFull();        // refreshes; true below 10 MiB available, so also without a card
void flagCorruptSDCard(); // as if no card were there, until the next refresh

// "7.40/7.41 GB": available and size.
QString cardSummary(const sSDcardInfo &card);
