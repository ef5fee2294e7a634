// SPDX-License-Identifier: MIT
#include "FileNames.h"
#include "FuzzTarget.h"

#include <QDir>

#include <cstring>

using namespace Qt::StringLiterals;

/// Any text cleans to a path inside the folder it is appended to, part by part, and to the same once more.
void checkInput(const QByteArray& input)
{
    QString text(input.size() / static_cast<qsizetype>(sizeof(QChar)), Qt::Uninitialized);
    if (!text.isEmpty())
        std::memcpy(text.data(), input.constData(), static_cast<size_t>(text.size()) * sizeof(QChar));
    const QString folder = u"/folder"_s;
    for (const QString& clean : {sanitizeFileName(text), sanitizeRelativePath(text)}) {
        abortIf(clean.isEmpty() || clean.contains(u'\\') || sanitizeRelativePath(clean) != clean
                || QDir::cleanPath(folder + u'/' + clean) != folder + u'/' + clean);
    }
    const QString name = sanitizeFileName(text);
    abortIf(name.contains(u'/') || sanitizeFileName(name) != name);
}
