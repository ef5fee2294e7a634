// SPDX-License-Identifier: MIT
#include "LogTime.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

QString logTime()
{
    thread_local qint64 second = -1;
    thread_local QString text;
    if (const qint64 now = QDateTime::currentSecsSinceEpoch(); now != second) {
        second = now;
        text = QDateTime::fromSecsSinceEpoch(now).toString(u"yyyy-MM-dd hh:mm:ss"_s);
    }
    return text;
}
