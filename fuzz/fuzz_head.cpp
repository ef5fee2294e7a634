// SPDX-License-Identifier: MIT
#include "HeadReader.h"

#include <algorithm>
#include <cstdlib>

/// Any lines leave a head whose names and values could be sent on: no name is empty or holds a blank, no value begins
/// or ends with one, and a head is complete only with a final status.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    HeadReader head;
    QByteArrayView rest(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    bool wasComplete = false;
    while (!rest.isEmpty()) {
        const qsizetype feed = rest.indexOf('\n');
        const QByteArrayView line = feed < 0 ? rest : rest.first(feed + 1);
        rest = rest.sliced(line.size());
        const int status = head.status();
        if (!head.takeLine(line))
            break;
        if (wasComplete && head.status() != status) // a trailer is no status line
            std::abort();
        wasComplete = head.isComplete();
    }
    if (head.isComplete() && head.status() != 101 && (head.status() < 200 || head.status() > 999))
        std::abort();
    for (const auto& [name, value] : head.headers() + head.trailers()) {
        const bool cleanName = std::ranges::all_of(name, [](char c) { return c > ' ' && c < 0x7F && c != ':'; });
        if (name.isEmpty() || !cleanName || value != value.trimmed() || value.contains('\n'))
            std::abort();
    }
    return 0;
}
