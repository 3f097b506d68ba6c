// ReadDirectory against the bare readdir, stat and sort of the same folder; the name of the next capture in
// it.
#include "testunit.h"

#include "storage/capturenames.h"
#include "storage/listing.h"
#include "storage/position.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

// A folder with so many captures, made at the first use. Every tenth is a film, every fifth has a voice note.
UnitPath folderOf(qint64 files)
{
    static const TestUnit unit({kBaseFolder});
    const UnitPath folder = kBaseFolder / QString::number(files);
    if (!QDir().mkdir(unit::path(folder)))
        return folder;
    for (int i = 0; i < files; ++i) {
        const QString extension = i % 10 == 9 ? QStringLiteral(".avi") : QStringLiteral(".jpg");
        unit.put(folder / captureName(i, extension), "x");
        if (i % 5 == 0)
            unit.put(folder / captureName(i, QStringLiteral(".wav")), "x");
    }
    return folder;
}

void readDirectory(benchmark::State &state)
{
    const UnitPath folder = folderOf(state.range(0));
    for (auto _ : state)
        ReadDirectory(folder);
    if (g_SavedFSInfo.nFilescurrRootDirectory != state.range(0))
        state.SkipWithError("files are missing in the listing");
}

// As it is before a capture: the folder is listed, its name is free at once.
void nextName(benchmark::State &state)
{
    g_SavedFSInfo.currRootDirectory = folderOf(state.range(0));
    ReadDirectory(g_SavedFSInfo.currRootDirectory);
    for (auto _ : state)
        benchmark::DoNotOptimize(freeCaptureName(QStringLiteral(".jpg")));
    if (g_SavedFSInfo.currDCIMIndex != state.range(0))
        state.SkipWithError("another name than the next");
}

struct Found
{
    std::string name;
    timespec modified;
};

bool isOlder(const Found &a, const Found &b)
{
    return a.modified.tv_sec != b.modified.tv_sec ? a.modified.tv_sec < b.modified.tv_sec
                                                  : a.modified.tv_nsec < b.modified.tv_nsec;
}

void readStatSort(benchmark::State &state)
{
    const QByteArray path = unit::path(folderOf(state.range(0))).encoded();
    for (auto _ : state) {
        std::vector<Found> files;
        DIR *directory = ::opendir(path.constData());
        while (const dirent *entry = ::readdir(directory)) {
            struct stat info = {};
            if (::fstatat(::dirfd(directory), entry->d_name, &info, 0) == 0)
                files.push_back({entry->d_name, info.st_mtim});
        }
        ::closedir(directory);
        std::sort(files.begin(), files.end(), isOlder);
        benchmark::DoNotOptimize(files.data());
    }
}

} // namespace

BENCHMARK(readDirectory)->Name("ours")->Arg(10)->Arg(1000)->Arg(9999);
BENCHMARK(readStatSort)->Name("peer")->Arg(10)->Arg(1000)->Arg(9999);
BENCHMARK(nextName)->Name("name")->Arg(10)->Arg(1000)->Arg(9999);
BENCHMARK_MAIN();
