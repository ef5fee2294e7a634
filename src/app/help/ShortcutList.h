// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

class QMenuBar;

/// What a key does, and where.
struct ShortcutRow
{
    QString keys {}; ///< several are separated by commas
    QString place {};
    QString effect {};
    friend bool operator==(const ShortcutRow&, const ShortcutRow&) = default;
};

/// The keys of the program's window: those of the menus, as their entries have them, then all others.
QList<ShortcutRow> shortcutList(const QMenuBar& menus);
