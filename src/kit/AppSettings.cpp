// SPDX-License-Identifier: MIT
#include "AppSettings.h"

using namespace Qt::StringLiterals;

QSettings openAppSettings()
{
    return QSettings(u"Norvo"_s, u"settings"_s);
}
