#include "storage/tornline.h"

#include "platform/unit.h"

#include <QFile>

#include <unistd.h>

namespace {

constexpr qint64 kWindow = 4096; // bytes; no line of ours is longer

bool open(QFile &file, QIODevice::OpenMode more)
{
    return file.open(QIODevice::ReadWrite | QIODevice::Unbuffered | more);
}

} // namespace

void mendTornLine(const UnitPath &unitPath)
{
    QFile file(unit::path(unitPath));
    if (!open(file, QIODevice::ExistingOnly))
        return;
    const qint64 start = std::max<qint64>(0, file.size() - kWindow);
    file.seek(start);
    const QByteArray tail = file.read(kWindow);
    if (tail.isEmpty() || tail.endsWith('\n'))
        return;
    const qsizetype lastEnd = tail.lastIndexOf('\n');
    if (lastEnd < 0 && start > 0)
        return; // not a log of ours
    file.resize(start + lastEnd + 1);
}

void completeLine(const UnitPath &unitPath, const QByteArray &wanted, const QByteArray &before)
{
    QFile file(unit::path(unitPath));
    if (!open(file, QIODevice::ExistingOnly))
        return;
    file.seek(std::max<qint64>(0, file.size() - before.size() - 2 * wanted.size()));
    const QByteArray end = file.readAll();
    const QByteArray last = end.mid(end.lastIndexOf('\n') + 1);
    const bool isWritten = end.chopped(last.size()).endsWith(wanted);
    const bool isMissing = last.isEmpty() && !before.isEmpty() && end.endsWith(before);
    if (isWritten || !wanted.startsWith(last) || (last.isEmpty() && !isMissing))
        return;
    file.write(wanted.mid(last.size()));
    ::fsync(file.handle());
}

bool appendLine(const UnitPath &unitPath, const QByteArray &line)
{
    QFile file(unit::path(unitPath));
    if (!open(file, {}))
        return false;
    file.seek(std::max<qint64>(0, file.size() - 1));
    const QByteArray last = file.read(1);
    const QByteArray bytes = last.isEmpty() || last == "\n" ? line : '\n' + line;
    return file.write(bytes) == bytes.size() && ::fsync(file.handle()) == 0;
}
