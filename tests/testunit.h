// A unit in a temporary folder, for tests: an empty tree of the folders that a test names, or the
// simulator's. And what tools that are not ours say about a film.
#pragma once

#include "heard.h"

#include "platform/unit.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

// A place on the unit, as it is typed in a test.
struct Place : UnitPath
{
    Place(const UnitPath &path) : UnitPath(path) {}
    Place(const QString &text) : UnitPath(text) {}
};

class TestUnit
{
public:
    // An empty unit with these folders.
    explicit TestUnit(const QList<Place> &folders)
    {
        for (const Place &folder : folders)
            QDir().mkpath(m_folder.path() + folder.text());
        unit::setRoot(m_folder.path());
    }

    // A simulated unit as a new user gets it, with the colour chart before the camera, which costs less
    // than the pipe. Made once for the program, then copied.
    TestUnit()
    {
        static const TestUnit made(QList<Place>{});
        static const bool isMade =
            made.control(QLatin1StringView("create")) && made.control(QLatin1StringView("camera chart"));
        const int copied = QProcess::execute(
            QStringLiteral("cp"),
            {QStringLiteral("-a"), made.m_folder.path() + QStringLiteral("/."), m_folder.path()});
        if (!isMade || copied != 0)
            qFatal("No simulated unit");
        unit::setRoot(m_folder.path());
    }

    // simulator/unit COMMAND...; true when it ended well.
    bool control(const QStringList &command) const
    {
        return QProcess::execute(QStringLiteral(TUBIX_SOURCE_DIR "/simulator/unit"),
                                 QStringList{QStringLiteral("--unit"), m_folder.path()} + command) == 0;
    }

    // The same with a command as it is typed: "card delay 2.5".
    bool control(QLatin1StringView command) const
    {
        return control(QString(command).split(QLatin1Char(' ')));
    }

    QByteArray content(const Place &unitPath) const
    {
        QFile file(unit::path(unitPath));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void put(const Place &unitPath, const QByteArray &text) const
    {
        QFile file(unit::path(unitPath));
        if (file.open(QIODevice::WriteOnly))
            file.write(text);
    }

private:
    QTemporaryDir m_folder;
};

// A file of the host for what reads and mends such: the root has to be "/" or lie above it.
inline HostPath onHost(const QString &file)
{
    return unit::path(unit::fromHost(file));
}

inline bool exists(const Place &unitPath)
{
    return QFile::exists(unit::path(unitPath));
}

// Both outputs of a program of the host: its words, with the paths for %1, %2.
inline QByteArray output(const char *command, const QStringList &paths)
{
    QStringList words = QString::fromLatin1(command).split(QLatin1Char(' '));
    for (int i = 0; i < paths.size(); ++i)
        words.replaceInStrings(QStringLiteral("%") + QString::number(i + 1), paths[i]);
    QProcess tool;
    tool.setProcessChannelMode(QProcess::MergedChannels);
    tool.start(words.takeFirst(), words);
    tool.waitForFinished(60000);
    return tool.readAll();
}

// Seconds of a film's stream ("v:0", "a:0"); 0 where there is none.
inline double duration(const QString &hostPath, const char *stream)
{
    return output("ffprobe -v error -show_entries stream=duration -of csv=p=0 -select_streams %2 %1",
                  {hostPath, QString::fromLatin1(stream)})
        .trimmed()
        .toDouble();
}

// What a player has to say against a film; nothing about one that is whole.
inline QByteArray faultsOf(const QString &hostPath)
{
    return output("ffmpeg -v error -i %1 -f null -", {hostPath});
}
