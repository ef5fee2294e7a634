// SPDX-License-Identifier: MIT
#include "ActionBox.h"

#include "PlainText.h"

#include <QPointer>
#include <QPushButton>

ActionBox::ActionBox(Icon icon, const QString& title, const QString& text, const QStringList& actions, QWidget* parent,
                     StandardButton closing)
    : QMessageBox(icon, title, text, NoButton, parent)
{
    setTextFormat(Qt::PlainText);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    actionButtons.reserve(actions.size());
    for (const QString& action : actions)
        actionButtons.append(addButton(action, ActionRole));
    setDefaultButton(addButton(closing));
    setEscapeButton(closing);
}

int ActionBox::choose()
{
    const QPointer<ActionBox> guard(this);
    exec();
    return guard ? chosenAction() : -1; // it may have gone with its parent
}

int ActionBox::chosenAction() const
{
    return static_cast<int>(actionButtons.indexOf(clickedButton()));
}

void ActionBox::openFor(const std::function<void(int)>& act)
{
    connect(this, &QDialog::finished, this, [this, act] {
        deleteLater();
        act(chosenAction());
    });
    open();
}

void showMessageBox(QMessageBox::Icon icon, const QString& title, const QString& text, QWidget* parent)
{
    const QPointer<ActionBox> box = new ActionBox(icon, title, messageForLabel(text), {}, parent);
    box->choose();
    delete box; // null if it went with its parent
}

void openMessageBox(QMessageBox::Icon icon, const QString& title, const QString& text, QWidget* parent)
{
    (new ActionBox(icon, title, messageForLabel(text), {}, parent))->openFor([](int) {});
}

bool askYesNo(QMessageBox::Icon icon, const QString& title, const QString& question, QWidget* parent)
{
    const QPointer<QMessageBox> box
        = new QMessageBox(icon, title, messageForLabel(question), QMessageBox::Yes | QMessageBox::No, parent);
    box->setTextFormat(Qt::PlainText);
    box->setDefaultButton(QMessageBox::No);
    const int answer = box->exec();
    const bool yes = box && answer == QMessageBox::Yes;
    delete box; // null if it went with its parent
    return yes;
}
