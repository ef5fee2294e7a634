// SPDX-License-Identifier: MIT
#include "StatusLogDialog.h"

#include "StatusWindow.h"

using namespace Qt::StringLiterals;

StatusLogDialog::StatusLogDialog(StatusWindow* window, QWidget* parent)
    : LogDialog(window, {&StatusWindow::statusLog, &StatusWindow::clearStatusLog}, u"Dialogs/StatusLogDialog"_s, parent)
{
    setWindowTitle(tr("Status Log"));
    setPlaceholder(tr("No status messages yet."));
}

void StatusLogDialog::follow(StatusWindow* window)
{
    connect(window, &StatusWindow::statusLogAppended, this, &StatusLogDialog::appendLogLine, Qt::UniqueConnection);
}
