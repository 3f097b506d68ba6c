#include "viewer/cardfiles.h"

#include "platform/unit.h"
#include "viewer/jpegsplitter.h"

#include <QDir>
#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringDecoder>

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace viewer;

constexpr qsizetype kMostFolders = 1000;
constexpr qsizetype kMostFiles = 20000;             // with notes and pages twice what the application lists
constexpr qint64 kFirstPictureWithin = 1024 * 1024; // bytes: the headers of a film, then its first picture

QString baseOnHost()
{
    return QFileInfo(unit::path(kBaseFolder)).canonicalFilePath();
}

// The host path after links; empty when it is not there or not below the base folder.
QString canonical(const QString &relative)
{
    const QString base = baseOnHost();
    const QString found =
        base.isEmpty() ? QString() : QFileInfo(base + QLatin1Char('/') + relative).canonicalFilePath();
    return found.startsWith(base + QLatin1Char('/')) ? found : QString();
}

bool isFilm(const QString &name)
{
    return name.endsWith(QLatin1String(".avi"), Qt::CaseInsensitive);
}

QJsonObject entryOf(const QDir &folder, const QFileInfo &capture)
{
    QJsonObject entry{{QStringLiteral("name"), capture.fileName()}, {QStringLiteral("size"), capture.size()}};
    const QString note = capture.completeBaseName() + QStringLiteral(".wav");
    if (!isFilm(capture.fileName()) && folder.exists(note))
        entry.insert(QStringLiteral("note"), note);
    return entry;
}

} // namespace

namespace viewer {

std::optional<CardFile> CardFile::find(const QString &relative)
{
    CardFile file;
    file.m_path = QFile::encodeName(canonical(relative));
    struct stat facts = {};
    if (file.m_path.isEmpty() || ::stat(file.m_path.constData(), &facts) != 0 || !S_ISREG(facts.st_mode))
        return {};
    file.m_device = facts.st_dev;
    file.m_size = facts.st_size;
    file.m_modified = facts.st_mtime;
    return file;
}

QByteArray CardFile::tag() const
{
    return '"' + QByteArray::number(m_size, 16) + '-' + QByteArray::number(m_modified, 16) + '"';
}

QString CardFile::name() const
{
    return QFile::decodeName(m_path.mid(m_path.lastIndexOf('/') + 1));
}

qint64 CardFile::read(qint64 at, char *to, qint64 most) const
{
    // Not to wait and not to follow: another thing may lie there by now.
    const int fd = ::open(m_path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
    if (fd < 0)
        return -1;
    struct stat facts = {};
    qint64 count = -1;
    // A FAT file has no lasting inode number; a film that is being recorded has grown.
    if (::fstat(fd, &facts) == 0 && facts.st_dev == m_device && facts.st_size >= m_size)
        count = ::pread(fd, to, size_t(most), at);
    ::close(fd);
    return count;
}

std::optional<QString> nameInAddress(const QByteArray &encoded)
{
    const QByteArray bytes = QByteArray::fromPercentEncoding(encoded);
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString name = decoder(bytes);
    const bool isClean = !decoder.hasError() && !name.isEmpty() && !name.contains(QChar::Null) &&
                         !name.split(QLatin1Char('/')).contains(QLatin1String(".."));
    return isClean ? std::optional(name) : std::nullopt;
}

bool isFolder(const QString &relative)
{
    const QString path = canonical(relative);
    return !path.isEmpty() && QFileInfo(path).isDir();
}

QByteArray folderList()
{
    const QString base = baseOnHost();
    QFileInfoList folders;
    QDirIterator walk(base, QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks,
                      QDirIterator::Subdirectories);
    while (!base.isEmpty() && walk.hasNext() && folders.size() < kMostFolders) {
        walk.next();
        folders.append(walk.fileInfo());
    }
    std::stable_sort(folders.begin(), folders.end(), [](const QFileInfo &a, const QFileInfo &b) {
        return a.lastModified() > b.lastModified();
    });
    QJsonArray list;
    for (const QFileInfo &each : folders) {
        QJsonObject entry{{QStringLiteral("name"), QDir(base).relativeFilePath(each.filePath())}};
        const QString page = each.fileName() + QStringLiteral(".html");
        if (QFileInfo::exists(each.filePath() + QLatin1Char('/') + page))
            entry.insert(QStringLiteral("page"), page);
        list.append(entry);
    }
    return QJsonDocument(list).toJson(QJsonDocument::Compact);
}

QByteArray captureList(const QString &folder)
{
    QDir directory(canonical(folder));
    directory.setNameFilters({QStringLiteral("*.jpg"), QStringLiteral("*.jpeg"), QStringLiteral("*.avi")});
    directory.setFilter(QDir::Files | QDir::NoSymLinks);
    QJsonArray list;
    for (const QFileInfo &each : directory.entryInfoList(QDir::NoFilter, QDir::Name)) {
        if (each.size() > 0 && list.size() < kMostFiles)
            list.append(entryOf(directory, each));
    }
    return QJsonDocument(list).toJson(QJsonDocument::Compact);
}

QList<QString> filesBelow(const QString &folder)
{
    const QString start = canonical(folder);
    const QString base = baseOnHost();
    QList<QString> files;
    QDirIterator walk(start, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (!start.isEmpty() && walk.hasNext() && files.size() < kMostFiles) {
        const QString file = QDir(base).relativeFilePath(walk.next());
        if (!file.contains(QLatin1String("/.thumbs/")))
            files.append(file);
    }
    std::sort(files.begin(), files.end());
    return files;
}

QByteArray firstPicture(const CardFile &film)
{
    JpegSplitter splitter;
    const qint64 count = film.read(0, splitter.room(kFirstPictureWithin), kFirstPictureWithin);
    splitter.taken(qsizetype(std::max<qint64>(0, count)));
    return splitter.next().value_or(QByteArray());
}

} // namespace viewer
