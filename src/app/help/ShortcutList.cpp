// SPDX-License-Identifier: MIT
#include "ShortcutList.h"

#include <QAction>
#include <QCoreApplication>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>

#include <array>

using namespace Qt::StringLiterals;

namespace {

struct OtherKey
{
    const char* keys; ///< as QKeySequence reads them, separated by commas
    const char* place;
    const char* effect;
};

/// Keys of tables, fields and dialogs, which no menu shows.
constexpr std::array otherKeys {
    OtherKey {"Return", QT_TRANSLATE_NOOP("ShortcutList", "Table"),
              QT_TRANSLATE_NOOP("ShortcutList", "As a double click: show the indirect pins, or copy the CID")},
    OtherKey {"Ctrl+A", QT_TRANSLATE_NOOP("ShortcutList", "Table"),
              QT_TRANSLATE_NOOP("ShortcutList", "Select all rows")},
    OtherKey {"Shift+Up, Shift+Down", QT_TRANSLATE_NOOP("ShortcutList", "Table"),
              QT_TRANSLATE_NOOP("ShortcutList", "Select more rows, or fewer")},
    OtherKey {"Esc", QT_TRANSLATE_NOOP("ShortcutList", "Search field"),
              QT_TRANSLATE_NOOP("ShortcutList", "Clear it, and go back to the table")},
    OtherKey {"Space", QT_TRANSLATE_NOOP("ShortcutList", "» in the tool bar"),
              QT_TRANSLATE_NOOP("ShortcutList", "Show what the tool bar has no room for")},
    OtherKey {"Space", QT_TRANSLATE_NOOP("ShortcutList", "Peer ID"), QT_TRANSLATE_NOOP("ShortcutList", "Copy it")},
    OtherKey {"Tab, Shift+Tab", QT_TRANSLATE_NOOP("ShortcutList", "Everywhere"),
              QT_TRANSLATE_NOOP("ShortcutList", "Go to the next control, or back")},
    OtherKey {"Esc", QT_TRANSLATE_NOOP("ShortcutList", "Tool windows, dialogs"),
              QT_TRANSLATE_NOOP("ShortcutList", "Close the window")},
    OtherKey {"Return", QT_TRANSLATE_NOOP("ShortcutList", "Add to IPFS, the tree"),
              QT_TRANSLATE_NOOP("ShortcutList", "Put the selected files and folders on the list")},
    OtherKey {"Del", QT_TRANSLATE_NOOP("ShortcutList", "Add to IPFS, the list"),
              QT_TRANSLATE_NOOP("ShortcutList", "Take the selected rows off the list")},
    OtherKey {"Ctrl+C", QT_TRANSLATE_NOOP("ShortcutList", "Indirect pins"),
              QT_TRANSLATE_NOOP("ShortcutList", "Copy the CIDs of the selected rows")},
    OtherKey {"Ctrl+C", QT_TRANSLATE_NOOP("ShortcutList", "Swarm, DHT stats"),
              QT_TRANSLATE_NOOP("ShortcutList", "Copy the selected cells")},
    OtherKey {"Return", QT_TRANSLATE_NOOP("ShortcutList", "Swarm, in a field"),
              QT_TRANSLATE_NOOP("ShortcutList", "Connect, or add the bootstrap peer")},
    OtherKey {"Return", QT_TRANSLATE_NOOP("ShortcutList", "Kubo config, in a field"),
              QT_TRANSLATE_NOOP("ShortcutList", "Get the key, or set the value")},
    OtherKey {"Return", QT_TRANSLATE_NOOP("ShortcutList", "Remote services, in a field"),
              QT_TRANSLATE_NOOP("ShortcutList", "Save the service")}};

QString translated(const char* text)
{
    return QCoreApplication::translate("ShortcutList", text);
}

QString withoutMnemonic(const QString& text)
{
    QString plain = text;
    plain.remove(u'&');
    while (plain.endsWith(u'.') || plain.endsWith(u'…'))
        plain.chop(1);
    return plain;
}

QString nativeText(const QList<QKeySequence>& keys)
{
    return QKeySequence::listToString(keys, QKeySequence::NativeText).replace("; "_L1, ", "_L1);
}

void appendMenu(const QMenu& menu, QList<ShortcutRow>& rows)
{
    const QString place = translated("%1 menu").arg(withoutMnemonic(menu.title()));
    for (const QAction* action : menu.actions()) {
        const QList<QKeySequence> keys = action->shortcuts();
        if (keys.isEmpty())
            continue;
        rows.append({.keys = nativeText(keys), .place = place, .effect = withoutMnemonic(action->text())});
    }
}

/// "Ctrl+A, Shift+Up" as this system writes the keys.
QString nativeKeys(const char* keys)
{
    const QList<QKeySequence> list
        = QKeySequence::listFromString(QString::fromLatin1(keys).replace(", "_L1, "; "_L1), QKeySequence::PortableText);
    return nativeText(list);
}

} // namespace

QList<ShortcutRow> shortcutList(const QMenuBar& menus)
{
    QList<ShortcutRow> rows;
    for (const QAction* entry : menus.actions()) {
        if (const QMenu* menu = entry->menu())
            appendMenu(*menu, rows);
    }
    rows.reserve(rows.size() + static_cast<qsizetype>(otherKeys.size()));
    for (const OtherKey& other : otherKeys) {
        rows.append(
            {.keys = nativeKeys(other.keys), .place = translated(other.place), .effect = translated(other.effect)});
    }
    return rows;
}
