#include "platform/attribute.h"

#include "platform/unit.h"

#include <QFile>

namespace attribute {

bool write(const UnitPath &unitPath, const QByteArray &text)
{
    QFile file(unit::path(unitPath));
    // Unbuffered: the attribute takes the text in one write, and a refusal is seen here.
    return file.open(QIODevice::WriteOnly | QIODevice::ExistingOnly | QIODevice::Truncate |
                     QIODevice::Unbuffered) &&
           file.write(text) == text.size();
}

bool selectRegister(const UnitPath &unitPath, const QByteArray &registerNumber)
{
    return !unit::isReal() || write(unitPath, registerNumber);
}

std::optional<QByteArray> read(const UnitPath &unitPath, qsizetype limit)
{
    QFile file(unit::path(unitPath));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return std::nullopt;
    QByteArray text(limit, '\0');
    const auto size = qsizetype(file.read(text.data(), limit));
    if (size < 0)
        return std::nullopt;
    text.truncate(size);
    return text;
}

} // namespace attribute
