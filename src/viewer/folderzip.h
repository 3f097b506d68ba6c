// A folder as one ZIP, made while it is read. Pictures and films are stored as they are; besides the list of
// names no more than a piece of one file is held in memory.
#pragma once

#include "viewer/cardfiles.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

struct archive;

namespace viewer {

class FolderZip
{
public:
    // `folder` relative to the base folder. Inside the archive everything lies below the folder's own name.
    explicit FolderZip(const QString &folder);
    ~FolderZip();
    Q_DISABLE_COPY_MOVE(FolderZip)

    // The next bytes of the archive; 0 behind the last one; -1 when a file cannot be read to its end.
    qint64 read(char *to, qint64 most);

private:
    bool addMore();
    bool beginFile(const QString &name);
    bool addPiece();

    const QString m_above; // what the names inside lack in front
    const QList<QString> m_names;
    qsizetype m_next = 0;
    std::optional<CardFile> m_file; // the one that is being added
    qint64 m_added = 0;             // bytes of it
    archive *m_archive;
    QByteArray m_made; // and not read yet
    bool m_isClosed = false;
};

} // namespace viewer
