// The inspection folders below the base folder, for reading. All paths that go in and out are relative to the
// base folder; nothing outside it is found, whatever a link says. Any thread.
#pragma once

#include "platform/unit.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace viewer {

inline const UnitPath kCardMountPoint = u"/media/mmcblk1p1"_unit;
inline const UnitPath kCardDevice = u"/dev/mmcblk1p1"_unit;
inline const UnitPath kBaseFolder = u"/media/mmcblk1p1/DCIM/100TUBIX"_unit;

// A file that is opened for each read and closed again: between two reads nothing keeps the card busy.
class CardFile
{
public:
    // Nothing when it is not there, no plain file, or outside the base folder.
    static std::optional<CardFile> find(const QString &relative);

    qint64 size() const { return m_size; }
    qint64 modified() const { return m_modified; } // seconds since 1970
    QByteArray tag() const;                        // another one for every content
    QString name() const;                          // without folder

    // Number of bytes read; 0 at the end; -1 when the file cannot be read any more, or is another one now.
    qint64 read(qint64 at, char *to, qint64 most) const;

private:
    QByteArray m_path; // of the host
    quint64 m_device = 0;
    qint64 m_size = 0;
    qint64 m_modified = 0;
};

// "/TUBX%200001.jpg" of an address as a name; nothing when it does not decode to a clean one.
std::optional<QString> nameInAddress(const QByteArray &encoded);

// True when `relative` is a folder below the base folder.
bool isFolder(const QString &relative);

// The folders, those that changed last first, as JSON: [{"name", "page"}]; "page" is there when the folder
// has one.
QByteArray folderList();

// Stills and films of a folder, by name, as JSON: [{"name", "size", "note"}]; "note" is there for a still
// with one.
QByteArray captureList(const QString &folder);

// Everything in the folder but the application's own thumbnails.
QList<QString> filesBelow(const QString &folder);

// The first picture of a film (or the still itself); empty when there is none at its start.
QByteArray firstPicture(const CardFile &film);

} // namespace viewer
