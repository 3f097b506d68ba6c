#include "storage/capturenames.h"

#include "platform/unit.h"
#include "storage/capturefiles.h"
#include "storage/position.h"

#include <QFileInfo>

namespace {

// A voice note counts: whatever took its name would get it, and take it along when it is deleted.
bool isTaken(const QString &fileName)
{
    return QFileInfo::exists(unit::path(inCurrentFolder(fileName))) ||
           QFileInfo::exists(unit::path(inCurrentFolder(capturefiles::noteOf(fileName))));
}

} // namespace

QString captureName(int index, const QString &extension)
{
    return QStringLiteral("%1%2%3").arg(QStringLiteral("TUBX"),
                                        QStringLiteral("%1").arg(index, 4, 10, QLatin1Char('0')), extension);
}

QString freeCaptureName(const QString &extension)
{
    qint16 &index = g_SavedFSInfo.currDCIMIndex;
    while (isTaken(captureName(index, extension)))
        ++index;
    return captureName(index, extension);
}

QString editedName(const QString &fileName, const QTime &time)
{
    const qsizetype dot = fileName.lastIndexOf(QLatin1Char('.'));
    QString extension = fileName.mid(dot);
    if (extension.compare(QLatin1String(".avi"), Qt::CaseInsensitive) == 0)
        extension = QStringLiteral(".jpg");
    return fileName.left(dot) + QLatin1Char('_') + time.toString(QStringLiteral("hhmmss")) + extension;
}

QString freeEditedName(const QString &fileName, QTime time)
{
    while (isTaken(editedName(fileName, time)))
        time = time.addSecs(1);
    return editedName(fileName, time);
}
