// SPDX-License-Identifier: MIT
#include "StatusLogDialog.h"

#include "MainWindow.h"

using namespace Qt::StringLiterals;

StatusLogDialog::StatusLogDialog(MainWindow* window, QWidget* parent)
    : LogDialog(window, {&MainWindow::statusLog, &MainWindow::clearStatusLog}, u"Dialogs/StatusLogDialog"_s, parent)
{
    setWindowTitle(tr("Status Log"));
    setPlaceholder(tr("No status messages yet."));
}

void StatusLogDialog::follow(MainWindow* window)
{
    connect(window, &MainWindow::statusLogAppended, this, &StatusLogDialog::appendLogLine, Qt::UniqueConnection);
}
