#include "platform/runlock.h"

#include "platform/unit.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

QByteArray lockFile()
{
    return unit::path(u"/run/tubix4.pid"_unit).encoded();
}

} // namespace

RunLock::RunLock() : m_fd(::open(lockFile().constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644))
{
    if (m_fd < 0)
        return;
    m_isFree = ::flock(m_fd, LOCK_EX | LOCK_NB) == 0;
    if (!m_isFree)
        return;
    const QByteArray number = QByteArray::number(qint64(::getpid())) + '\n';
    if (::ftruncate(m_fd, 0) != 0 || ::write(m_fd, number.constData(), size_t(number.size())) < 0)
        qWarning("cannot write the process number to /run/tubix4.pid");
}

RunLock::~RunLock()
{
    if (m_fd < 0)
        return;
    if (m_isFree)
        ::unlink(lockFile().constData());
    ::close(m_fd);
}
