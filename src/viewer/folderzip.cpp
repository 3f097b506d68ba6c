#include "viewer/folderzip.h"

#include <QLoggingCategory>

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <array>
#include <cstring>
#include <memory>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.viewer")

constexpr int kPiece = 64 * 1024;
constexpr auto kPlainFileMode = 0644;

// libarchive hands out what it has made.
la_ssize_t keep(archive *, void *made, const void *bytes, size_t count)
{
    static_cast<QByteArray *>(made)->append(static_cast<const char *>(bytes), qsizetype(count));
    return la_ssize_t(count);
}

} // namespace

namespace viewer {

FolderZip::FolderZip(const QString &folder)
    : m_above(folder.left(folder.lastIndexOf(QLatin1Char('/')) + 1)), m_names(filesBelow(folder)),
      m_archive(archive_write_new())
{
    archive_write_set_format_zip(m_archive);
    archive_write_zip_set_compression_store(m_archive);
    archive_write_set_options(m_archive, "zip:hdrcharset=UTF-8");
    archive_write_set_bytes_per_block(m_archive, 0); // nothing is held back
    archive_write_open2(m_archive, &m_made, nullptr, keep, nullptr, nullptr);
}

FolderZip::~FolderZip()
{
    archive_write_free(m_archive);
}

qint64 FolderZip::read(char *to, qint64 most)
{
    while (m_made.isEmpty() && !m_isClosed) {
        if (!addMore()) {
            qCWarning(log) << "the archive breaks off:" << archive_error_string(m_archive);
            return -1;
        }
    }
    const qsizetype count = qsizetype(std::min<qint64>(m_made.size(), most));
    std::memcpy(to, m_made.constData(), size_t(count));
    m_made.remove(0, count);
    return count;
}

bool FolderZip::addMore()
{
    if (m_file)
        return addPiece();
    if (m_next < m_names.size())
        return beginFile(m_names.at(m_next++));
    m_isClosed = true;
    return archive_write_close(m_archive) == ARCHIVE_OK;
}

bool FolderZip::beginFile(const QString &name)
{
    m_file = CardFile::find(name);
    if (!m_file)
        return true; // deleted meanwhile
    m_added = 0;
    const std::unique_ptr<archive_entry, decltype(&archive_entry_free)> entry(archive_entry_new2(m_archive),
                                                                              archive_entry_free);
    archive_entry_set_pathname_utf8(entry.get(), name.mid(m_above.size()).toUtf8().constData());
    archive_entry_set_filetype(entry.get(), AE_IFREG);
    archive_entry_set_perm(entry.get(), kPlainFileMode);
    archive_entry_set_size(entry.get(), m_file->size());
    archive_entry_set_mtime(entry.get(), m_file->modified(), 0);
    return archive_write_header(m_archive, entry.get()) >= ARCHIVE_WARN;
}

bool FolderZip::addPiece()
{
    std::array<char, kPiece> piece;
    const qint64 wanted = std::min<qint64>(kPiece, m_file->size() - m_added);
    if (wanted == 0) {
        m_file.reset();
        return archive_write_finish_entry(m_archive) >= ARCHIVE_WARN;
    }
    const qint64 count = m_file->read(m_added, piece.data(), wanted);
    if (count <= 0)
        return false;
    m_added += count;
    return archive_write_data(m_archive, piece.data(), size_t(count)) == count;
}

} // namespace viewer
