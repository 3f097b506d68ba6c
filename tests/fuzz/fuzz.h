// What the fuzz targets share. Each begins with the bytes of a stranger; what must hold is checked with
// require().
#pragma once

#include "platform/unit.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

inline void require(bool holds)
{
    if (!holds)
        std::abort();
}

// A unit in a temporary folder that lives as long as the process.
class FuzzUnit
{
public:
    explicit FuzzUnit(const QStringList &folders)
    {
        for (const QString &folder : folders)
            QDir().mkpath(m_folder.path() + QStringLiteral("/unit") + folder);
        unit::setRoot(m_folder.path() + QStringLiteral("/unit"));
    }

    static void put(const UnitPath &unitPath, const QByteArray &content)
    {
        QFile file(unit::path(unitPath));
        require(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }

    static QByteArray content(const UnitPath &unitPath)
    {
        QFile file(unit::path(unitPath));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    // Nothing lies beside the unit.
    bool isAlone() const
    {
        return QDir(m_folder.path())
                   .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
                   .size() == 1;
    }

private:
    QTemporaryDir m_folder;
};

// FUZZ(input) { ... }: what one input goes through.
#define FUZZ(input)                                                                                          \
    static void take(const QByteArray &input);                                                               \
    extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)                                  \
    {                                                                                                        \
        take(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));                             \
        return 0;                                                                                            \
    }                                                                                                        \
    static void take(const QByteArray &input)
