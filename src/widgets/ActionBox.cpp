// SPDX-License-Identifier: MIT
#include "ActionBox.h"

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
    exec();
    return static_cast<int>(actionButtons.indexOf(clickedButton()));
}
