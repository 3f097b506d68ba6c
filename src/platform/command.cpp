#include "platform/command.h"

#include "platform/unit.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QProcess>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.platform")

QString executable(const QString &program)
{
    if (program.startsWith(QLatin1Char('/')))
        return unit::path(UnitPath(program));
    if (unit::isReal())
        return program;
    return unit::path(u"/usr/bin"_unit / program);
}

} // namespace

namespace command {

Result run(const QString &program, const QStringList &arguments)
{
    const QString file = executable(program);
    QProcess process;
    if (!unit::isReal()) {
        if (!QFileInfo(file).isExecutable()) {
            qCWarning(log) << "no such command on this unit:" << program;
            return {};
        }
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PATH"), unit::path(u"/usr/bin"_unit));
        process.setProcessEnvironment(environment);
    }
    process.start(file, arguments, QIODevice::ReadWrite);
    if (!process.waitForStarted(-1)) {
        qCWarning(log) << "cannot run" << program << process.errorString();
        return {};
    }
    process.closeWriteChannel();
    process.waitForFinished(-1);
    return {true, process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace command
