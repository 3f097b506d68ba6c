#include "storage/listing.h"

#include "platform/unit.h"
#include "storage/capturefiles.h"
#include "storage/position.h"

#include <QFile>
#include <QSet>

#include <algorithm>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>
#include <vector>

std::array<sSnakeFileInfo, kMostFiles> g_FileListing;

namespace {

constexpr int kNumberedNameLength = 12; // TUBX0007.jpg
constexpr int kNumberStart = 4;
constexpr int kNumberLength = 4;

bool isListed(const QString &name)
{
    for (const char *suffix : {".jpg", ".jpeg", ".avi"}) {
        if (name.endsWith(QLatin1String(suffix), Qt::CaseInsensitive))
            return true;
    }
    return false;
}

struct FoundFile
{
    QString name;
    timespec modified;
};

struct FolderContent
{
    std::vector<FoundFile> files; // listed ones, not empty
    QSet<QString> notes;          // names of voice notes
};

FolderContent readFolder(const UnitPath &folder)
{
    FolderContent content;
    const std::unique_ptr<DIR, int (*)(DIR *)> directory(::opendir(unit::path(folder).encoded().constData()),
                                                         ::closedir);
    if (!directory)
        return content;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): a directory of our own
    while (const dirent *entry = ::readdir(directory.get())) {
        if (entry->d_name[0] == '.')
            continue;
        QString name = QFile::decodeName(entry->d_name);
        if (name.endsWith(QLatin1String(".wav")))
            content.notes.insert(name);
        if (!isListed(name))
            continue;
        struct stat info = {};
        if (::fstatat(::dirfd(directory.get()), entry->d_name, &info, 0) == 0 && S_ISREG(info.st_mode) &&
            info.st_size > 0)
            content.files.push_back({std::move(name), info.st_mtim});
    }
    return content;
}

bool isOlder(const FoundFile &a, const FoundFile &b)
{
    if (a.modified.tv_sec != b.modified.tv_sec)
        return a.modified.tv_sec < b.modified.tv_sec;
    if (a.modified.tv_nsec != b.modified.tv_nsec)
        return a.modified.tv_nsec < b.modified.tv_nsec;
    return a.name < b.name; // the card's stamps are two seconds apart: ties are common
}

int numberOf(const QString &name)
{
    return name.size() == kNumberedNameLength ? QStringView(name).mid(kNumberStart, kNumberLength).toInt()
                                              : 0;
}

} // namespace

void ReadDirectory(const UnitPath &folder)
{
    FolderContent content = readFolder(folder);
    std::sort(content.files.begin(), content.files.end(), isOlder);
    int highest = 0;
    for (const FoundFile &file : content.files)
        highest = std::max(highest, numberOf(file.name));
    const auto count = std::min<size_t>(content.files.size(), kMostFiles);
    for (size_t i = 0; i < count; ++i) {
        sSnakeFileInfo &entry = g_FileListing[i];
        entry.fileName = std::move(content.files[i].name);
        entry.isVideo = entry.fileName.contains(QLatin1String(".avi")) ? 1 : 0;
        entry.annotated =
            !entry.isVideo && content.notes.contains(capturefiles::noteOf(entry.fileName)) ? 1 : 0;
        entry.deletePending = 0;
    }
    g_SavedFSInfo.nFilescurrRootDirectory = static_cast<qint16>(count);
    g_SavedFSInfo.currDCIMIndex = static_cast<qint16>(highest + 1);
}

int indexInListing(const QString &fileName)
{
    const auto end = g_FileListing.cbegin() + g_SavedFSInfo.nFilescurrRootDirectory;
    const auto found = std::find_if(g_FileListing.cbegin(), end,
                                    [&](const sSnakeFileInfo &entry) { return entry.fileName == fileName; });
    return found == end ? -1 : int(found - g_FileListing.cbegin());
}
