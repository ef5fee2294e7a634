// SPDX-License-Identifier: MIT
#include "RpcLogDialog.h"

#include "StatusWindow.h"

using namespace Qt::StringLiterals;

RpcLogDialog::RpcLogDialog(StatusWindow* window, QWidget* parent)
    : LogDialog(window, {&StatusWindow::rpcLog, &StatusWindow::clearRpcLog}, u"Dialogs/RpcLogDialog"_s, parent)
{
    setWindowTitle(tr("Kubo RPC Log"));
    setPlaceholder(tr("No RPC commands issued yet."));
}

void RpcLogDialog::follow(StatusWindow* window)
{
    connect(window, &StatusWindow::rpcLogAppended, this, &RpcLogDialog::appendLogLine, Qt::UniqueConnection);
}
