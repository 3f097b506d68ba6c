// One entry of the inspection log on a page of so many rows, against one append of the same bytes with fsync.
#include "testunit.h"

#include "storage/inspectionlog.h"
#include "storage/position.h"

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
    QByteArray page = folder.content(kPage);
    page.insert(page.lastIndexOf("</table>"), entryOfPicture().row.repeated(state.range(0)));
    putSynced(kPage, page);
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

} // namespace

BENCHMARK(updateLogFiles)->Name("ours")->Arg(10)->Arg(1000)->Arg(10000)->Iterations(kEntries)->UseRealTime();
BENCHMARK(appendSynced)->Name("peer")->Arg(10)->Arg(1000)->Arg(10000)->Iterations(kEntries)->UseRealTime();
BENCHMARK_MAIN();
