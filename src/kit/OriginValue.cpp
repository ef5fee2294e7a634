// SPDX-License-Identifier: MIT
#include "OriginValue.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

QString normalizedOriginValue(const QString& text)
{
    QString value = text;
    value.removeIf([](QChar c) { return c == u'\r' || c == u'\n' || c == u'\0'; });
    return value.trimmed().left(maximumOriginLength);
}

QString defaultOriginValue()
{
    return normalizedOriginValue(u"Norvo "_s + QCoreApplication::applicationVersion().trimmed());
}

QString effectiveOriginValue(const QString& text)
{
    const QString value = normalizedOriginValue(text);
    return value.isEmpty() ? defaultOriginValue() : value;
}
