// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QWidget>

/// The first child, of any depth, that has this text without "&"; null if there is none.
template <typename Type> Type* withText(const QWidget& parent, const QString& text)
{
    for (auto* candidate : parent.findChildren<Type*>()) {
        if (candidate->text().remove(QLatin1Char('&')) == text)
            return candidate;
    }
    return nullptr;
}
