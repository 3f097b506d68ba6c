// A library that is loaded before the C library's own functions (LD_PRELOAD): on a simulated unit's card, and
// nowhere else, changes take as long and fail as `simulator/unit card slow` and `card error` say. A folder's
// permissions cannot do that: they are nothing to root and know no full card.
//
// A path belongs to a card when it is absolute and lies below DIR/media/mmcblk1p1; the dials are in
// DIR/.simulator and are read with every change, so that they work at once and in every process. Reading is
// never touched. `simulator/unit change` counts the application's own folder as well.
#undef _TIME_BITS // the functions under their own names, not under those of a 64-bit interface
#undef _FILE_OFFSET_BITS

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

enum class Change { OpenForWriting, Data, NewFolder, Entry, Flush };

struct Error
{
    const char *name;
    int number;
    bool (*affects)(Change change);
};

// A full card still has room for a name, and a broken one does not know before it is written to.
constexpr Error kErrors[] = {
    {"EROFS", EROFS, [](Change change) { return change != Change::Flush; }},
    {"ENOSPC", ENOSPC, [](Change change) { return change == Change::Data || change == Change::NewFolder; }},
    {"EIO", EIO, [](Change change) { return change != Change::OpenForWriting; }},
};

constexpr char kCard[] = "/media/mmcblk1p1/";
constexpr char kHome[] = "/home/root/tubix4_app/";

// Where a descriptor leads, as far as was seen: a number becomes another file's without this library hearing
// of it.
enum class Place : char { Unknown, Unit, Elsewhere };
constexpr int kMostDescriptors = 4096;
std::atomic<Place> places[kMostDescriptors];

bool isOnCard(const char *path)
{
    return std::strstr(path, kCard);
}

// Where the unit's own path begins in `path`; null: it is no unit's.
const char *onUnit(const char *path)
{
    if (!path || path[0] != '/')
        return nullptr;
    const char *card = std::strstr(path, kCard);
    return card ? card : std::strstr(path, kHome);
}

// The path of that dial, of the unit that holds `path`; false for what does not fit.
bool dialPath(char (&file)[PATH_MAX], const char *path, const char *dial)
{
    const int root = static_cast<int>(onUnit(path) - path);
    return std::snprintf(file, sizeof file, "%.*s/.simulator/%s", root, path, dial) < PATH_MAX;
}

// The dial's line, by system calls: nothing here may come back to this library. False for a dial that was
// never set.
bool readDial(const char *file, char (&line)[32])
{
    const long descriptor = syscall(SYS_openat, AT_FDCWD, file, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const long size = syscall(SYS_read, descriptor, line, sizeof line - 1);
    syscall(SYS_close, descriptor);
    line[size > 0 ? size : 0] = '\0';
    return size > 0;
}

void rest(long milliseconds)
{
    timespec left = {milliseconds / 1000, milliseconds % 1000 * 1000000};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

const Error *errorIn(const char *line)
{
    for (const Error &error : kErrors) {
        if (std::strstr(line, error.name))
            return &error;
    }
    return nullptr;
}

// The number of this change, from 1 on, among all that any process makes while the dial is set.
long countedChange(const char *path)
{
    char file[PATH_MAX];
    if (!dialPath(file, path, "changes"))
        return 0;
    const long descriptor =
        syscall(SYS_openat, AT_FDCWD, file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    syscall(SYS_write, descriptor, ".", 1);
    const off_t count = lseek(static_cast<int>(descriptor), 0, SEEK_CUR); // behind what this one has added
    syscall(SYS_close, descriptor);
    return static_cast<long>(count);
}

// "7 EIO once", "7 KILL": what the change of that number meets, and without "once" all after it.
int outcomeOfCounted(const char *path, Change change)
{
    char file[PATH_MAX], line[32];
    if (!dialPath(file, path, "change_fault") || !readDial(file, line))
        return 0;
    const long number = countedChange(path), wanted = std::atol(line);
    if (wanted == 0 || number < wanted || (number > wanted && std::strstr(line, " once")))
        return 0;
    if (std::strstr(line, "KILL"))
        raise(SIGKILL);
    const Error *error = errorIn(line);
    return error && error->affects(change) ? error->number : 0;
}

// What the card's state makes of a change of that file: 0 or the errno to fail with, after the time that it
// takes.
int outcome(const char *path, Change change)
{
    char file[PATH_MAX], line[32];
    if (const int reason = outcomeOfCounted(path, change); reason != 0 || !isOnCard(path))
        return reason;
    if (change == Change::Data && dialPath(file, path, "card_slow") && readDial(file, line))
        rest(std::atol(line));
    if (!dialPath(file, path, "card_error") || !readDial(file, line))
        return 0;
    const Error *error = errorIn(line);
    if (!error || !error->affects(change))
        return 0;
    // "once" is for whoever takes it first.
    return !std::strstr(line, " once") || syscall(SYS_unlinkat, AT_FDCWD, file, 0) == 0 ? error->number : 0;
}

bool fails(const char *path, Change change)
{
    const int before = errno;
    const int reason = onUnit(path) ? outcome(path, change) : 0;
    errno = reason == 0 ? before : reason;
    return reason != 0;
}

int noted(int descriptor, Place place)
{
    if (descriptor >= 0 && descriptor < kMostDescriptors)
        places[descriptor] = place;
    return descriptor;
}

bool fails(int descriptor, Change change)
{
    if (descriptor < 0 || descriptor >= kMostDescriptors || places[descriptor] == Place::Elsewhere)
        return false;
    const int before = errno;
    char link[32], path[PATH_MAX];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const long size = syscall(SYS_readlinkat, AT_FDCWD, link, path, sizeof path - 1);
    path[size > 0 ? size : 0] = '\0';
    errno = before;
    noted(descriptor, onUnit(path) ? Place::Unit : Place::Elsewhere);
    return fails(path, change);
}

int opened(int descriptor, const char *path)
{
    return noted(descriptor, onUnit(path) ? Place::Unit : Place::Elsewhere);
}

bool isForWriting(int flags)
{
    return (flags & (O_WRONLY | O_RDWR | O_CREAT | O_TRUNC)) != 0;
}

mode_t modeOf(int flags, va_list arguments)
{
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE ? va_arg(arguments, mode_t) : 0;
}

} // namespace

// The C library's own function of that name.
#define NEXT(name)                                                                                           \
    ([] {                                                                                                    \
        static std::atomic<void *> known;                                                                    \
        void *next = known;                                                                                  \
        if (!next)                                                                                           \
            known = next = dlsym(RTLD_NEXT, #name);                                                          \
        return reinterpret_cast<decltype(&::name)>(next);                                                    \
    }())

#define OPEN(name)                                                                                           \
    int name(const char *path, int flags, ...)                                                               \
    {                                                                                                        \
        va_list arguments;                                                                                   \
        va_start(arguments, flags);                                                                          \
        const mode_t mode = modeOf(flags, arguments);                                                        \
        va_end(arguments);                                                                                   \
        if (isForWriting(flags) && fails(path, Change::OpenForWriting))                                      \
            return -1;                                                                                       \
        return opened(NEXT(name)(path, flags, mode), path);                                                  \
    }

#define OPENAT(name)                                                                                         \
    int name(int folder, const char *path, int flags, ...)                                                   \
    {                                                                                                        \
        va_list arguments;                                                                                   \
        va_start(arguments, flags);                                                                          \
        const mode_t mode = modeOf(flags, arguments);                                                        \
        va_end(arguments);                                                                                   \
        if (isForWriting(flags) && fails(path, Change::OpenForWriting))                                      \
            return -1;                                                                                       \
        return opened(NEXT(name)(folder, path, flags, mode), path);                                          \
    }

#define FOPEN(name)                                                                                          \
    FILE *name(const char *path, const char *mode)                                                           \
    {                                                                                                        \
        if (std::strpbrk(mode, "wa+") && fails(path, Change::OpenForWriting))                                \
            return nullptr;                                                                                  \
        FILE *file = NEXT(name)(path, mode);                                                                 \
        if (file)                                                                                            \
            opened(fileno(file), path);                                                                      \
        return file;                                                                                         \
    }

// A function that changes what its first argument names.
// NOLINTBEGIN(bugprone-macro-parentheses): a list of arguments brings its own
#define CHANGE(result, name, change, parameters, arguments, what, exception)                                 \
    result name parameters exception                                                                         \
    {                                                                                                        \
        return fails(what, change) ? -1 : NEXT(name) arguments;                                              \
    }
// NOLINTEND(bugprone-macro-parentheses)

extern "C" {

OPEN(open)
OPEN(open64)
OPENAT(openat)
OPENAT(openat64)
FOPEN(fopen)
FOPEN(fopen64)

int dup(int from) noexcept
{
    return noted(NEXT(dup)(from), Place::Unknown);
}

int dup2(int from, int to) noexcept
{
    return noted(NEXT(dup2)(from, to), Place::Unknown);
}

// clang-format off
CHANGE(ssize_t, write, Change::Data, (int file, const void *bytes, size_t size), (file, bytes, size), file, )
CHANGE(ssize_t, writev, Change::Data, (int file, const iovec *parts, int count), (file, parts, count), file, )
CHANGE(ssize_t, pwrite, Change::Data, (int file, const void *bytes, size_t size, off_t at), (file, bytes, size, at), file, )
CHANGE(ssize_t, pwrite64, Change::Data, (int file, const void *bytes, size_t size, off64_t at), (file, bytes, size, at), file, )
CHANGE(int, ftruncate, Change::Entry, (int file, off_t size), (file, size), file, noexcept)
CHANGE(int, ftruncate64, Change::Entry, (int file, off64_t size), (file, size), file, noexcept)
CHANGE(int, fsync, Change::Flush, (int file), (file), file, )
CHANGE(int, fdatasync, Change::Flush, (int file), (file), file, )
CHANGE(int, truncate, Change::Entry, (const char *path, off_t size), (path, size), path, noexcept)
CHANGE(int, truncate64, Change::Entry, (const char *path, off64_t size), (path, size), path, noexcept)
CHANGE(int, mkdir, Change::NewFolder, (const char *path, mode_t mode), (path, mode), path, noexcept)
CHANGE(int, rmdir, Change::Entry, (const char *path), (path), path, noexcept)
CHANGE(int, unlink, Change::Entry, (const char *path), (path), path, noexcept)
CHANGE(int, remove, Change::Entry, (const char *path), (path), path, noexcept)
CHANGE(int, link, Change::Entry, (const char *from, const char *to), (from, to), to, noexcept)
CHANGE(int, rename, Change::Entry, (const char *from, const char *to), (from, to), to, noexcept)
CHANGE(int, renameat2, Change::Entry, (int fromFolder, const char *from, int toFolder, const char *to, unsigned flags), (fromFolder, from, toFolder, to, flags), to, noexcept)
// clang-format on

} // extern "C"
