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

#include <array>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.system")

struct CardState
{
    messagelog::Card card;
    eMainStates state;
    UnitEvent event;
};
constexpr std::array kCardStates = {
    CardState{messagelog::Card::Inserted, eStateSDCardInserted, UnitEvent::CardInserted},
    CardState{messagelog::Card::Removed, eStateSDCardRemoved, UnitEvent::CardRemoved},
    CardState{messagelog::Card::Corrupt, eStateSDCardCorrupt, UnitEvent::CardCorrupt}};

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
    m_logBatch = messagelog::Batch(believedCard(), qint64(m_pParams->getParams().lastMessageLogLocation),
                                   QFileInfo(path).size());
    readMessageLog();
}

// The card's state that the next lines start from: what waits to be taken, is being taken, or came last.
messagelog::Card MainWindow::believedCard() const
{
    const auto pending = m_events.lastCardEvent();
    for (const CardState &known : kCardStates) {
        if (pending ? known.event == *pending : known.state == g_MainState)
            return known.card;
    }
    for (const CardState &known : kCardStates) {
        if (known.state == g_prevMainState)
            return known.card;
    }
    return messagelog::Card::Unknown;
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
    announceCard(m_logBatch);
    if (hasGrown) // while we read, so that nobody told us
        QTimer::singleShot(0, this, [this] { onLogfileChanged(logFile()); });
}

void MainWindow::announceCard(const messagelog::Batch &batch)
{
    using messagelog::Card;
    // Pulled and put back between two looks: it may be another card, and no file on it is open any more.
    const bool wasSwapped = batch.sawRemoval() && batch.card() != Card::Removed && SDCardInfo.inserted;
    if (wasSwapped)
        announce(UnitEvent::CardRemoved);
    if (!wasSwapped && batch.card() == believedCard())
        return;
    for (const CardState &known : kCardStates) {
        if (known.card == batch.card())
            announce(known.event);
    }
}
