// SPDX-License-Identifier: MIT
#include "FileNames.h"

#include <QDir>

#include <cstdlib>
#include <cstring>

using namespace Qt::StringLiterals;

/// Any text cleans to a path inside the folder it is appended to, part by part, and to the same once more.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QString text(static_cast<qsizetype>(size / sizeof(QChar)), Qt::Uninitialized);
    if (!text.isEmpty())
        std::memcpy(text.data(), data, static_cast<size_t>(text.size()) * sizeof(QChar));
    const QString folder = u"/folder"_s;
    for (const QString& clean : {sanitizeFileName(text), sanitizeRelativePath(text)}) {
        if (clean.isEmpty() || clean.contains(u'\\') || sanitizeRelativePath(clean) != clean
            || QDir::cleanPath(folder + u'/' + clean) != folder + u'/' + clean)
            std::abort();
    }
    const QString name = sanitizeFileName(text);
    if (name.contains(u'/') || sanitizeFileName(name) != name)
        std::abort();
    return 0;
}
