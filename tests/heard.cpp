#include "heard.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <glib.h>

namespace {

// Warnings that are no fault of the program.
constexpr std::array kExpected = {
    // The form's own colour, which is mended where it is used.
    "QCssParser::parseColorValue: Specified color without alpha value but alpha given: 'rgb 164, 164, 164, "
    "50%'",
    "Corrupt JPEG data: premature end of data segment",  // told to whoever reads one
    "This plugin does not support propagateSizeHints()", // off screen
};

QtMessageHandler g_testLog = nullptr; // written once, before anything is heard

// What the program itself has to say bears its category.
bool isExpected(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    return type == QtDebugMsg || type == QtInfoMsg || qstrncmp(context.category, "tubix.", 6) == 0 ||
           std::any_of(kExpected.begin(), kExpected.end(),
                       [&](const char *text) { return message.startsWith(QLatin1String(text)); });
}

void hear(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    g_testLog(type, context, message);
    if (!isExpected(type, context, message))
        QTest::qFail(qPrintable(QStringLiteral("Unexpected warning: ") + message), __FILE__, __LINE__);
}

void hearGlib(const gchar *domain, GLogLevelFlags level, const gchar *message, gpointer)
{
    if (level & (G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING))
        qWarning("%s: %s", domain ? domain : "GLib", message);
}

} // namespace

void HeardTest::init()
{
    if (g_testLog)
        return;
    g_testLog = qInstallMessageHandler(hear); // the test log's own, which is there by now
    g_log_set_default_handler(hearGlib, nullptr);
}
