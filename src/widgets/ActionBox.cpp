// SPDX-License-Identifier: MIT
#include "ActionBox.h"

#include "PlainText.h"

#include <QEvent>
#include <QLabel>
#include <QLayout>
#include <QPointer>
#include <QPushButton>
#include <QScreen>

#include <algorithm>

using namespace Qt::StringLiterals;

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

bool ActionBox::event(QEvent* event)
{
    const bool isTaken = QMessageBox::event(event);
    if (event->type() == QEvent::LayoutRequest)
        makeRoomForWords();
    return isTaken;
}

void ActionBox::showEvent(QShowEvent* event)
{
    QMessageBox::showEvent(event);
    makeRoomForWords();
}

/// A message box bounds its width to what is left of the screen after 480 pixels, which is less than a CID in a large
/// font: its label would cut it off.
void ActionBox::makeRoomForWords()
{
    const auto* label = findChild<QLabel*>(u"qt_msgbox_label"_s);
    const int lack = label ? label->minimumSizeHint().width() - label->width() : 0;
    if (lack <= 0)
        return;
    const int wider = std::min(width() + lack, screen()->availableSize().width());
    setFixedSize(wider, layout()->totalHeightForWidth(wider));
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
