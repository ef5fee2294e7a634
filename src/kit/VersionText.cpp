// SPDX-License-Identifier: MIT
#include "VersionText.h"

#include <QVersionNumber>

namespace {

constexpr qsizetype mostLetters = 100;

QString withoutV(const QString& text)
{
    const QString version = text.trimmed();
    return version.startsWith(u'v', Qt::CaseInsensitive) ? version.sliced(1) : version;
}

QString firstLine(const QByteArray& body)
{
    const QString text = QString::fromUtf8(body).trimmed();
    QString line = text.left(text.indexOf(u'\n')); // all of it without one
    return line.remove(u'\r');
}

} // namespace

VersionVerdict judgeVersions(const QByteArray& body, const QString& current)
{
    const QString own = withoutV(current);
    const QString published = withoutV(firstLine(body));
    VersionVerdict verdict {.current = own.left(mostLetters), .latest = published.left(mostLetters)};
    const QVersionNumber ownNumber = QVersionNumber::fromString(own);
    const QVersionNumber publishedNumber = QVersionNumber::fromString(published);
    if (!ownNumber.isNull() && !publishedNumber.isNull()) {
        const bool isNewer = QVersionNumber::compare(publishedNumber, ownNumber) > 0;
        verdict.kind = isNewer ? VersionVerdict::Newer : VersionVerdict::UpToDate;
    }
    return verdict;
}
