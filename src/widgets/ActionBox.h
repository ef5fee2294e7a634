// SPDX-License-Identifier: MIT
#pragma once

#include <QMessageBox>
#include <QStringList>

#include <functional>

/// A message box with an Ok button and buttons for what can be done with what it says. All texts are plain, and the
/// message can be selected.
class ActionBox : public QMessageBox
{
    Q_OBJECT

public:
    /// `closing` is the button that does nothing else.
    ActionBox(Icon icon, const QString& title, const QString& text, const QStringList& actions, QWidget* parent,
              StandardButton closing = Ok);

    /// Runs the box. The position of the action that was chosen; -1 if it was closed otherwise.
    int choose();
    /// Shows the box, which is deleted once it is closed, and returns. `act` is called with the position of the action
    /// that was chosen, or -1; it is not called if the box goes with its parent.
    void openFor(const std::function<void(int)>& act);

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    int chosenAction() const;
    void makeRoomForWords();

    QList<QAbstractButton*> actionButtons;
};

// `parent`, and the box with it, may be deleted while the box is open; it may be gone when they return.

/// Runs a box that has nothing but an Ok button. The middle of a very long text is left out.
void showMessageBox(QMessageBox::Icon icon, const QString& title, const QString& text, QWidget* parent);
/// As that, but shows the box and returns; it blocks `parent` until it is closed.
void openMessageBox(QMessageBox::Icon icon, const QString& title, const QString& text, QWidget* parent);
/// Runs a box with Yes and No, default No. Returns true for Yes, and only if `parent` is still there.
bool askYesNo(QMessageBox::Icon icon, const QString& title, const QString& question, QWidget* parent);
