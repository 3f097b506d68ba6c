// The browser's pages of thumbnails. Files count from 0, pages from 1.
#pragma once

#include <algorithm>

inline constexpr int kFilesOnPage = 12;

inline int pageOf(int file)
{
    return file / kFilesOnPage + 1;
}

// 1 for an empty folder.
inline int pageCount(int files)
{
    return pageOf(std::max(files - 1, 0));
}

struct FilesOnPage
{
    int first;
    int end; // behind the last
};

inline FilesOnPage filesOnPage(int page, int files)
{
    const int first = (page - 1) * kFilesOnPage;
    return {first, std::min(first + kFilesOnPage, files)};
}

// Where a step leads from one of `count` places, the first of them `first`; beyond the ends nowhere: `from`.
inline int stepWithin(int from, int step, int first, int count)
{
    const int wanted = from + step;
    return wanted >= first && wanted < first + count ? wanted : from;
}
