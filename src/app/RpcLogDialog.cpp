#include "RpcLogDialog.h"

#include "MainWindow.h"

using namespace Qt::StringLiterals;

RpcLogDialog::RpcLogDialog(MainWindow* window, QWidget* parent)
    : LogDialog(window, {&MainWindow::rpcLog, &MainWindow::rpcLogAppended, &MainWindow::clearRpcLog},
                u"Dialogs/RpcLogDialog"_s, parent)
{
    setWindowTitle(tr("Kubo RPC Log"));
    setPlaceholder(tr("No RPC commands issued yet."));
}
