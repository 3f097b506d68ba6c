// A unit in a temporary folder, for tests: an empty tree of the folders that a test names, or the
// simulator's.
#pragma once

#include "platform/unit.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

class TestUnit
{
public:
    // An empty unit with these folders.
    explicit TestUnit(const QStringList &folders)
    {
        for (const QString &folder : folders)
            QDir().mkpath(m_folder.path() + folder);
        unit::setRoot(m_folder.path());
    }

    // A simulated unit as a new user gets it.
    TestUnit()
    {
        control({QStringLiteral("create")});
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

    QByteArray content(const QString &unitPath) const
    {
        QFile file(unit::path(unitPath));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void put(const QString &unitPath, const QByteArray &text) const
    {
        QFile file(unit::path(unitPath));
        if (file.open(QIODevice::WriteOnly))
            file.write(text);
    }

private:
    QTemporaryDir m_folder;
};
