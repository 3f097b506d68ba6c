// What the kernel's messages tell about the card.
#pragma once

#include <QByteArray>

namespace messagelog {

enum class Card { Unknown, Inserted, Removed, Corrupt };

// What is believed after one more line. An error phrase counts on a partition line and on every line that
// follows one while the card is believed inserted; only a new partition line ends "corrupt".
Card afterLine(Card before, const QByteArray &line);

} // namespace messagelog
