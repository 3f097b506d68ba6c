#include "system/messagelog.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array kErrorPhrases = {"mmc1: error", "FAT read failed", "bread failed",
                                      "error, fat_free_clusters", "has been set read-only"};

bool tellsError(const QByteArray &line)
{
    return std::any_of(kErrorPhrases.begin(), kErrorPhrases.end(),
                       [&](const char *phrase) { return line.contains(phrase); });
}

} // namespace

namespace messagelog {

Card afterLine(Card before, const QByteArray &line)
{
    Card card = before;
    if (line.contains("mmc1: card") && line.contains("removed"))
        card = Card::Removed;
    if (line.contains("mmcblk1: p1") || card == Card::Inserted)
        card = tellsError(line) ? Card::Corrupt : Card::Inserted;
    return card;
}

} // namespace messagelog
