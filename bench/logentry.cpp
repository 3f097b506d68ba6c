// One entry of the inspection log on a page of so many rows, in a folder of so many pictures, against one
// append of the same bytes with fsync; one line of an event log of so many megabytes.
#include "testunit.h"

#include "storage/capturenames.h"
#include "storage/eventlog.h"
#include "storage/inspectionlog.h"
#include "storage/position.h"

#include <QFileInfo>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

const UnitPath kFolder = kBaseFolder / QStringLiteral("Street 12");
const UnitPath kPage = kFolder / QStringLiteral("Street 12.html");
const QString kPicture = QStringLiteral("TUBX0007.jpg");
constexpr int kEntries = 40; // of one measurement: the page must not grow much meanwhile

void putSynced(const UnitPath &unitPath, const QByteArray &bytes)
{
    const int file =
        ::open(unit::path(unitPath).encoded().constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (::write(file, bytes.constData(), size_t(bytes.size())) != bytes.size() || ::fsync(file) != 0)
        std::abort();
    ::close(file);
}

const inspectionlog::Entry &entryOfPicture()
{
    static const inspectionlog::Entry entry =
        inspectionlog::entry(eImageCapture, 1234, QStringLiteral("14:05:09"), QStringLiteral("TUBX0007.jpg"));
    return entry;
}

void updateLogFiles(benchmark::State &state)
{
    const TestUnit folder({kFolder});
    g_SavedFSInfo.currRootDirectory = kFolder;
    createLogHTMLlog(kFolder);
    folder.put(kFolder / kPicture, "x");
    const QByteArray picture = unit::path(kFolder / kPicture).encoded();
    for (int i = 1; i <= state.range(0); ++i) {
        const UnitPath next = kFolder / captureName(i, QStringLiteral(".jpg"));
        ::link(picture.constData(), unit::path(next).encoded().constData()); // a name is all that they need
    }
    QByteArray page = folder.content(kPage);
    page.insert(page.lastIndexOf("</table>"), entryOfPicture().row.repeated(state.range(0)));
    putSynced(kPage, page);
    UpdateLogFiles(eImageCapture, 1234, kPicture, QString()); // brings what the names have left to be synced
    for (auto _ : state)
        UpdateLogFiles(eImageCapture, 1234, kPicture, QString());
    if (folder.content(kPage).count("<tr>") < state.range(0) + kEntries)
        state.SkipWithError("rows are missing in the page");
}

void appendSynced(benchmark::State &state)
{
    const TestUnit folder({kFolder});
    putSynced(kPage, entryOfPicture().row.repeated(state.range(0)));
    const QByteArray path = unit::path(kPage).encoded();
    const QByteArray bytes = entryOfPicture().row + entryOfPicture().line;
    for (auto _ : state) {
        const int file = ::open(path.constData(), O_WRONLY | O_APPEND | O_CLOEXEC);
        if (::write(file, bytes.constData(), size_t(bytes.size())) != bytes.size() || ::fsync(file) != 0)
            state.SkipWithError("cannot append");
        ::close(file);
    }
}

void updateEventLog(benchmark::State &state)
{
    const UnitPath log = u"/home/root/tubix4_app/eventlog.csv"_unit;
    const TestUnit made({log.parent()});
    const QString text = QStringLiteral("Zoom plus button clicked - 3");
    putSynced(log, {});
    QFile::resize(unit::path(log), state.range(0) << 20); // without blocks: nothing is to be read there
    UpdateEventLog(eEventZoomPlus, text);
    const QFileInfo file(unit::path(log));
    const qint64 before = file.size();
    for (auto _ : state)
        UpdateEventLog(eEventZoomPlus, text);
    if (QFileInfo(file.filePath()).size() - before <= kEntries * text.size())
        state.SkipWithError("lines are missing in the event log");
}

} // namespace

BENCHMARK(updateLogFiles)->Name("ours")->Arg(10)->Arg(1000)->Arg(10000)->Iterations(kEntries)->UseRealTime();
BENCHMARK(appendSynced)->Name("peer")->Arg(10)->Arg(1000)->Arg(10000)->Iterations(kEntries)->UseRealTime();
BENCHMARK(updateEventLog)->Name("event")->Arg(0)->Arg(100)->Iterations(kEntries)->UseRealTime();
BENCHMARK_MAIN();
