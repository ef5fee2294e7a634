// SPDX-License-Identifier: MIT
#include "ActionBox.h"

#include <QPointer>
#include <QPushButton>

ActionBox::ActionBox(Icon icon, const QString& title, const QString& text, const QStringList& actions, QWidget* parent)
    : QMessageBox(icon, title, text, NoButton, parent)
{
    setTextFormat(Qt::PlainText);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    for (const QString& action : actions)
        actionButtons.append(addButton(action, ActionRole));
    setDefaultButton(addButton(Ok));
    setEscapeButton(Ok);
}

int ActionBox::choose()
{
    const QPointer<ActionBox> self = this;
    exec();
    return self ? static_cast<int>(actionButtons.indexOf(clickedButton())) : -1;
}
