#include "platform/savefile.h"

#include "platform/unit.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Ours alone: what a kill leaves behind may be deleted without a second look.
constexpr char kTemporarySuffix[] = ".tubix-new";
constexpr qsizetype kCopyPiece = 65536; // bytes

// An open descriptor that is closed on every way out.
class Descriptor
{
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Q_DISABLE_COPY_MOVE(Descriptor)
    int get() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }

private:
    const int m_fd;
};

bool writeAll(int fd, const QByteArray &content)
{
    qsizetype done = 0;
    while (done < content.size()) {
        const ssize_t n = ::write(fd, content.constData() + done, size_t(content.size() - done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return false;
        done += n;
    }
    return true;
}

bool fillTemporary(const QByteArray &temporary, const QByteArray &target, const QByteArray &content)
{
    struct stat old = {};
    const bool replaces = ::stat(target.constData(), &old) == 0;
    Descriptor file(::open(temporary.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (!file.isOpen())
        return false;
    if (replaces) {
        // Ownership is best effort: a card's file system has none, and on a desk we are not root.
        if (::fchown(file.get(), old.st_uid, old.st_gid) != 0)
            errno = 0;
        if (::fchmod(file.get(), old.st_mode & 07777) != 0)
            errno = 0;
    }
    return writeAll(file.get(), content) && ::fsync(file.get()) == 0;
}

bool copyAll(int from, int to)
{
    QByteArray piece(kCopyPiece, '\0');
    for (;;) {
        const ssize_t n = ::read(from, piece.data(), size_t(kCopyPiece));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return n == 0;
        if (!writeAll(to, QByteArray::fromRawData(piece.constData(), n)))
            return false;
    }
}

bool copyToTemporary(const QByteArray &source, const QByteArray &temporary)
{
    const Descriptor from(::open(source.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat info = {};
    if (!from.isOpen() || ::fstat(from.get(), &info) != 0)
        return false;
    if (!S_ISREG(info.st_mode)) {
        errno = EINVAL;
        return false;
    }
    ::unlink(temporary.constData()); // of a copy that was cut off
    const Descriptor to(::open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    return to.isOpen() && copyAll(from.get(), to.get()) && ::fchmod(to.get(), info.st_mode & 0777) == 0 &&
           ::fsync(to.get()) == 0;
}

void sync(const QByteArray &file)
{
    const Descriptor opened(::open(file.constData(), O_RDONLY | O_CLOEXEC));
    if (opened.isOpen())
        ::fsync(opened.get());
}

void report(QString *error)
{
    if (error)
        *error = qt_error_string(errno);
}

// `fill(temporary, target)` makes the new file; it takes the place of the old one whole.
template <typename Fill> bool replace(const UnitPath &unitPath, Fill fill, QString *error)
{
    const QByteArray target = unit::path(unitPath).encoded();
    const QByteArray temporary = target + kTemporarySuffix;
    if (!fill(temporary, target) || ::rename(temporary.constData(), target.constData()) != 0) {
        report(error);
        ::unlink(temporary.constData());
        return false;
    }
    // On FAT the size stands in the folder's entry, which the new name has got anew: it is written with the
    // file.
    sync(target);
    sync(unit::path(unitPath.parent()).encoded());
    return true;
}

} // namespace

namespace savefile {

bool write(const UnitPath &unitPath, const QByteArray &content, QString *error)
{
    return replace(
        unitPath,
        [&](const QByteArray &temporary, const QByteArray &target) {
            return fillTemporary(temporary, target, content);
        },
        error);
}

bool writeThrough(const UnitPath &unitPath, const QByteArray &content, QString *error)
{
    const QString target = QFileInfo(unit::path(unitPath)).canonicalFilePath();
    QString root = QFileInfo(unit::path(u"/"_unit)).canonicalFilePath();
    if (root == QLatin1String("/"))
        root.clear();
    const bool isOnUnit = target.startsWith(root + QLatin1Char('/'));
    return write(isOnUnit ? UnitPath(target.mid(root.size())) : unitPath, content, error);
}

bool copy(const UnitPath &from, const UnitPath &to, QString *error)
{
    const QByteArray source = unit::path(from).encoded();
    return replace(
        to,
        [&](const QByteArray &temporary, const QByteArray &) { return copyToTemporary(source, temporary); },
        error);
}

std::optional<QByteArray> read(const UnitPath &unitPath, qint64 limit, QString *error)
{
    QFile file(unit::path(unitPath));
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = file.errorString();
        return std::nullopt;
    }
    const QByteArray content = file.read(limit + 1);
    if (content.size() > limit) {
        if (error)
            *error = QStringLiteral("File too large");
        return std::nullopt;
    }
    return content;
}

void removeLeftovers(const UnitPath &unitFolder)
{
    QDir folder(unit::path(unitFolder));
    const QStringList names =
        folder.entryList({QLatin1Char('*') + QLatin1String(kTemporarySuffix)}, QDir::Files | QDir::Hidden);
    for (const QString &name : names)
        folder.remove(name);
}

} // namespace savefile
