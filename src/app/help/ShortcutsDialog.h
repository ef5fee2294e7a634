// SPDX-License-Identifier: MIT
#pragma once

#include "ShortcutList.h"

#include <QDialog>

class QTableWidget;

/// A table of all keys that do something.
class ShortcutsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit ShortcutsDialog(const QList<ShortcutRow>& rows, QWidget* parent = nullptr);

private:
    QTableWidget* newTable(const QList<ShortcutRow>& rows);
};
