#include "MainWindow.h"

void MainWindow::onRpcRequestIssued(const QString& requestDescription)
{
    rpcLogLines.append(requestDescription);
    emit rpcLogAppended(requestDescription);
}
