// The kernel's message log: what it tells about the card.
#include "app/mainwindow.h"

#include "platform/unit.h"
#include "settings/params.h"
#include "storage/sdcard.h"

#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QLoggingCategory>
#include <QTimer>

#include <algorithm>
#include <array>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.system")

struct CardEvent
{
    messagelog::Card card;
    UnitEvent event;
};
constexpr std::array kCardEvents = {CardEvent{messagelog::Card::Inserted, UnitEvent::CardInserted},
                                    CardEvent{messagelog::Card::Removed, UnitEvent::CardRemoved},
                                    CardEvent{messagelog::Card::Corrupt, UnitEvent::CardCorrupt}};

messagelog::Card cardAfter(std::optional<UnitEvent> event)
{
    const auto known = std::ranges::find(kCardEvents, event, &CardEvent::event);
    return known == kCardEvents.end() ? messagelog::Card::Unknown : known->card;
}

std::optional<UnitEvent> eventOf(messagelog::Card card)
{
    const auto known = std::ranges::find(kCardEvents, card, &CardEvent::card);
    return known == kCardEvents.end() ? std::nullopt : std::optional(known->event);
}

HostPath logFile()
{
    return unit::path(u"/var/log/messages"_unit);
}

} // namespace

void MainWindow::watchMessageLog()
{
    messagelogWatcher = new QFileSystemWatcher(this);
    connect(messagelogWatcher, &QFileSystemWatcher::fileChanged, this, &MainWindow::onLogfileChanged);
    connect(messagelogWatcher, &QFileSystemWatcher::directoryChanged, this, &MainWindow::onDirectoryChanged);
    messagelogWatcher->addPaths({unit::path(u"/var/log"_unit), logFile()});
}

void MainWindow::onDirectoryChanged(const QString &path)
{
    qCDebug(log) << "Directory Changed: " << path;
    // A file that is replaced falls out of the watch, also where the watcher still lists it: a new one may
    // have its name before the old one's end is told. So it is taken up anew, and its length noted.
    messagelogWatcher->removePath(logFile());
    if (messagelogWatcher->addPath(logFile()))
        onLogfileChanged(logFile());
}

void MainWindow::onLogfileChanged(const QString &path)
{
    if (m_logBatch.isReading())
        return; // looked at again at its end
    const auto believed = lastCardEvent(m_waiting.events, g_MainState, g_prevMainState);
    m_logBatch = messagelog::Batch(cardAfter(believed), qint64(m_pParams->getParams().lastMessageLogLocation),
                                   QFileInfo(path).size());
    readMessageLog();
}

// One slice; the picture gets its turn before the next one.
void MainWindow::readMessageLog()
{
    QFile file(logFile());
    if (!file.open(QIODevice::ReadOnly)) {
        qCDebug(log) << "[ERROR] Opening message log file";
        m_logBatch = {};
        return;
    }
    if (m_logBatch.readOn(file)) {
        QTimer::singleShot(0, this, &MainWindow::readMessageLog);
        return;
    }
    m_pParams->getParams().lastMessageLogLocation = quint64(m_logBatch.nextLocation());
    const bool hasGrown = file.size() > m_logBatch.size();
    const auto believed = lastCardEvent(m_waiting.events, g_MainState, g_prevMainState);
    for (const UnitEvent event :
         cardNews(eventOf(m_logBatch.card()), believed, m_logBatch.sawRemoval(), SDCardInfo.inserted))
        announce(event);
    if (hasGrown) // while we read, so that nobody told us
        QTimer::singleShot(0, this, [this] { onLogfileChanged(logFile()); });
}
