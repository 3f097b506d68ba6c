#include "film/filmlimit.h"

namespace {

constexpr qint64 kLargestFilm = 3900LL * 1024 * 1024;
qint64 g_limit = kLargestFilm; // written by tests alone

} // namespace

namespace filmlimit {

qint64 bytes()
{
    return g_limit;
}

void setForTests(qint64 bytes)
{
    g_limit = bytes > 0 ? bytes : kLargestFilm;
}

} // namespace filmlimit
