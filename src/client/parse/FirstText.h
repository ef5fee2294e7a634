// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QString>

/// The first text under one of `keys` that is not blank, trimmed; empty if there is none.
template <typename Keys> QString firstText(const QJsonObject& object, const Keys& keys)
{
    for (const QLatin1StringView key : keys) {
        if (QString text = object.value(key).toString().trimmed(); !text.isEmpty())
            return text;
    }
    return {};
}
