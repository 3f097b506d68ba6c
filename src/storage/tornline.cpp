#include "storage/tornline.h"

#include "platform/unit.h"

#include <QFile>

#include <unistd.h>

namespace {

constexpr qint64 kWindow = 4096; // bytes; no line of ours is longer

}

void mendTornLine(const QString &unitPath)
{
    QFile file(unit::path(unitPath));
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered))
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

bool appendLine(const QString &unitPath, const QByteArray &line)
{
    QFile file(unit::path(unitPath));
    return file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered) &&
           file.write(line) == line.size() && ::fsync(file.handle()) == 0;
}
