// SPDX-License-Identifier: MIT
#pragma once

#include <QMessageBox>
#include <QStringList>

/// A message box with an Ok button and buttons for what can be done with what it says. All texts are plain, and the
/// message can be selected.
class ActionBox : public QMessageBox
{
    Q_OBJECT

public:
    ActionBox(Icon icon, const QString& title, const QString& text, const QStringList& actions, QWidget* parent);

    /// Runs the box. The position of the action that was chosen; -1 if it was closed otherwise.
    int choose();

private:
    QList<QPushButton*> actionButtons;
};
