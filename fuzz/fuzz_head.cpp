// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "HeadReader.h"

#include <algorithm>
#include <vector>

/// Any lines leave a head whose names and values could be sent on: no name is empty or holds a blank, no value begins
/// or ends with one, and a head is complete only with a final status.
void checkInput(const QByteArray& input)
{
    HeadReader head;
    const std::vector<char> exact(input.begin(), input.end()); // so that a read beyond it is seen
    QByteArrayView rest(exact);
    bool wasComplete = false;
    while (!rest.isEmpty()) {
        const qsizetype feed = rest.indexOf('\n');
        const QByteArrayView line = feed < 0 ? rest : rest.first(feed + 1);
        rest = rest.sliced(line.size());
        const int status = head.status();
        if (!head.takeLine(line))
            break;
        abortIf(wasComplete && head.status() != status); // a trailer is no status line
        wasComplete = head.isComplete();
    }
    abortIf(head.isComplete() && head.status() != 101 && (head.status() < 200 || head.status() > 999));
    for (const auto& [name, value] : head.headers() + head.trailers()) {
        const bool cleanName = std::ranges::all_of(name, [](char c) { return c > ' ' && c < 0x7F && c != ':'; });
        abortIf(name.isEmpty() || !cleanName || value != value.trimmed() || value.contains('\n'));
    }
}
