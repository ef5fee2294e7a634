// SPDX-License-Identifier: MIT
#include "OpenFiles.h"

#include <QFileDevice>

#ifdef Q_OS_UNIX
#include <sys/resource.h>

#include <algorithm>
#include <climits>
#include <limits>

namespace {

/// macOS refuses anything above OPEN_MAX, whatever the hard limit says.
rlim_t reachableLimit(rlim_t hard)
{
#if defined(Q_OS_MACOS) && defined(OPEN_MAX)
    return std::min<rlim_t>(hard, OPEN_MAX);
#else
    return hard;
#endif
}

} // namespace

long long raiseOpenFileLimit()
{
    rlimit limit {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return -1;
    const rlimit raised {.rlim_cur = std::max(limit.rlim_cur, reachableLimit(limit.rlim_max)),
                         .rlim_max = limit.rlim_max};
    if (setrlimit(RLIMIT_NOFILE, &raised) == 0)
        limit = raised;
    return static_cast<long long>(std::min<rlim_t>(limit.rlim_cur, std::numeric_limits<long long>::max()));
}

bool halfOfOpenFilesUsed(const QFileDevice& newest)
{
    rlimit limit {};
    return getrlimit(RLIMIT_NOFILE, &limit) == 0 && static_cast<rlim_t>(newest.handle()) >= limit.rlim_cur / 2;
}
#else
long long raiseOpenFileLimit()
{
    return -1;
}

bool halfOfOpenFilesUsed(const QFileDevice& /*newest*/)
{
    return false;
}
#endif
