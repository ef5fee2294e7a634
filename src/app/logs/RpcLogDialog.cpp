// SPDX-License-Identifier: MIT
#include "RpcLogDialog.h"

#include "MainWindow.h"

using namespace Qt::StringLiterals;

RpcLogDialog::RpcLogDialog(MainWindow* window, QWidget* parent)
    : LogDialog(window, {&MainWindow::rpcLog, &MainWindow::clearRpcLog}, u"Dialogs/RpcLogDialog"_s, parent)
{
    setWindowTitle(tr("Kubo RPC Log"));
    setPlaceholder(tr("No RPC commands issued yet."));
}

void RpcLogDialog::follow(MainWindow* window)
{
    connect(window, &MainWindow::rpcLogAppended, this, &RpcLogDialog::appendLogLine, Qt::UniqueConnection);
}
