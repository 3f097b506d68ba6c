// The kernel's lines: any bytes, told in two batches or in one.
#include "fuzz.h"
#include "system/messagelog.h"

#include <QBuffer>

using namespace messagelog;

static Batch readAll(QBuffer &log, Card before, qint64 from, qint64 size)
{
    Batch batch(before, from, size);
    while (batch.readOn(log)) {
    }
    require(!batch.isReading() && batch.nextLocation() >= std::min(from, size) &&
            batch.nextLocation() <= size);
    return batch;
}

FUZZ(input)
{
    QByteArray text = input.mid(1);
    QBuffer log(&text);
    log.open(QIODevice::ReadOnly);
    const Card whole = readAll(log, Card::Unknown, 0, text.size()).card();
    const qint64 seam = text.isEmpty() ? 0 : text.indexOf('\n', uchar(input[0]) * text.size() / 256) + 1;
    const Batch first = readAll(log, Card::Unknown, 0, seam);
    require(readAll(log, first.card(), first.nextLocation(), text.size()).card() == whole);
}
