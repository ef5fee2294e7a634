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

// Both stand it that `parent`, and the box with it, goes while the box is open. It may be gone when they return.

/// Runs a box that has nothing but an Ok button. The middle of a very long text is left out.
void showMessageBox(QMessageBox::Icon icon, const QString& title, const QString& text, QWidget* parent);
/// Runs a box with Yes and No, default No. Returns true for Yes, and only if `parent` is still there.
bool askYesNo(QMessageBox::Icon icon, const QString& title, const QString& question, QWidget* parent);
