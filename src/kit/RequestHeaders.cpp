// SPDX-License-Identifier: MIT
#include "RequestHeaders.h"

#include "AppSettings.h"
#include "OriginValue.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

QString userAgent()
{
    return u"Norvo/"_s + QCoreApplication::applicationVersion();
}

QByteArray originHeader(const QSettings& settings)
{
    if (!settings.value(SettingsKeys::sendOrigin, false).toBool())
        return {};
    return effectiveOriginValue(settings.value(SettingsKeys::originValue).toString()).toUtf8();
}
