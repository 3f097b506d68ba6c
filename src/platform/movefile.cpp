#include "platform/movefile.h"

#include "platform/unit.h"

#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

bool moveFile(const UnitPath &from, const UnitPath &to)
{
    const QByteArray source = unit::path(from).encoded();
    const QByteArray target = unit::path(to).encoded();
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    // A file system that does not know the flag.
    return !QFileInfo::exists(unit::path(to)) && std::rename(source.constData(), target.constData()) == 0;
}
