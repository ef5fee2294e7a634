#include "MainWindow.h"

#include "IpfsClient.h"
#include "RpcLogDialog.h"
#include "StatusLogDialog.h"

#include <array>
#include <utility>

/// What makes one tool window and not another. A window without `make` is not there yet, and nothing opens it.
struct MainWindow::ToolWindow
{
    QDialog* MainWindow::*pointer = nullptr;
    QDialog* (*make)(MainWindow& window) = nullptr;
    const char* opened = nullptr; ///< status message; null for none
    const char* closed = nullptr;
};

/// A dialog for a facility of the node; what it has to say goes to the status line.
template <typename Dialog> QDialog* MainWindow::newNodeTool(MainWindow& window)
{
    auto* dialog = new Dialog(window.client, &window);
    connect(dialog, &Dialog::statusMessageRequested, &window, &MainWindow::setStatusMessage);
    return dialog;
}

template <typename Dialog> QDialog* MainWindow::newLogWindow(MainWindow& window)
{
    return new Dialog(&window, &window);
}

/// In the order of ToolWindowId.
const MainWindow::ToolWindow& MainWindow::toolWindow(ToolWindowId id)
{
    static constexpr std::array toolWindows {
        ToolWindow {&MainWindow::gcDialog, nullptr, QT_TR_NOOP("Opened GC window"), QT_TR_NOOP("GC window closed")},
        ToolWindow {&MainWindow::dhtStatsDialog, nullptr, QT_TR_NOOP("Opened DHT stats window"),
                    QT_TR_NOOP("DHT stats window closed")},
        ToolWindow {&MainWindow::networkDialog, nullptr, QT_TR_NOOP("Opened network window"),
                    QT_TR_NOOP("Network window closed")},
        ToolWindow {&MainWindow::swarmDialog, nullptr, QT_TR_NOOP("Opened swarm window"),
                    QT_TR_NOOP("Swarm window closed")},
        ToolWindow {&MainWindow::configDialog, nullptr, QT_TR_NOOP("Opened config window"),
                    QT_TR_NOOP("Config window closed")},
        ToolWindow {&MainWindow::remoteServicesDialog, nullptr, QT_TR_NOOP("Opened remote services window"),
                    QT_TR_NOOP("Remote services window closed")},
        ToolWindow {&MainWindow::statusLogDialog, &MainWindow::newLogWindow<StatusLogDialog>},
        ToolWindow {&MainWindow::rpcLogDialog, &MainWindow::newLogWindow<RpcLogDialog>}};
    static_assert(toolWindows.size() == static_cast<size_t>(ToolWindowId::Count));
    return toolWindows.at(static_cast<size_t>(id));
}

bool MainWindow::hasToolWindow(ToolWindowId id)
{
    return toolWindow(id).make != nullptr;
}

void MainWindow::showToolWindow(ToolWindowId id, AuxWindowMode mode)
{
    const ToolWindow& tool = toolWindow(id);
    if (!tool.make)
        return;
    QDialog*& dialog = this->*tool.pointer;
    if (!dialog) {
        dialog = tool.make(*this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        connect(dialog, &QObject::destroyed, this, [this, &tool] { onToolWindowDestroyed(tool); });
    }
    configureAuxDialogWindowMode(dialog, mode);
    if (tool.opened)
        setStatusMessage(tr(tool.opened));
    if (auto* log = qobject_cast<LogDialog*>(dialog))
        log->refreshLog();
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

void MainWindow::onToolWindowDestroyed(const ToolWindow& tool)
{
    this->*tool.pointer = nullptr;
    if (tool.closed)
        setStatusMessage(tr(tool.closed));
}

/// Moves a dialog over to the other mode as well; it keeps its place and what it shows.
void MainWindow::configureAuxDialogWindowMode(QDialog* dialog, AuxWindowMode mode)
{
    if (!dialog)
        return;
    const bool wasVisible = dialog->isVisible();
    const QRect place = dialog->geometry();
    if (wasVisible)
        dialog->hide();
    const bool child = mode == AuxChildWindow;
    dialog->setParent(child ? this : nullptr, child ? Qt::Dialog : Qt::Window);
    dialog->setWindowModality(Qt::NonModal);
    if (wasVisible)
        dialog->setGeometry(place);
}

/// Those in windows of their own have no parent that would do it, and all of them use the client.
void MainWindow::deleteToolWindows()
{
    for (int id = 0; id < static_cast<int>(ToolWindowId::Count); ++id) {
        QDialog* dialog = std::exchange(this->*toolWindow(static_cast<ToolWindowId>(id)).pointer, nullptr);
        if (!dialog)
            continue;
        dialog->disconnect(this);
        delete dialog;
    }
}

void MainWindow::showGcDialog(AuxWindowMode mode)
{
    showToolWindow(ToolWindowId::Gc, mode);
}

void MainWindow::showDhtStatsDialog(AuxWindowMode mode)
{
    showToolWindow(ToolWindowId::DhtStats, mode);
}

void MainWindow::showNetworkDialog(AuxWindowMode mode)
{
    showToolWindow(ToolWindowId::Network, mode);
}

void MainWindow::showSwarmDialog(AuxWindowMode mode)
{
    showToolWindow(ToolWindowId::Swarm, mode);
}

void MainWindow::showConfigDialog(AuxWindowMode mode)
{
    showToolWindow(ToolWindowId::Config, mode);
}

void MainWindow::showRemoteServicesDialog(AuxWindowMode mode)
{
    showToolWindow(ToolWindowId::RemoteServices, mode);
}

void MainWindow::showStatusLogDialog(AuxWindowMode mode)
{
    showToolWindow(ToolWindowId::StatusLog, mode);
}

void MainWindow::showRpcLogDialog(AuxWindowMode mode)
{
    showToolWindow(ToolWindowId::RpcLog, mode);
}

void MainWindow::onGcClicked()
{
    showGcDialog(AuxNewWindow);
}

void MainWindow::onDhtStatsClicked()
{
    showDhtStatsDialog(AuxNewWindow);
}

void MainWindow::onConfigClicked()
{
    showConfigDialog(AuxNewWindow);
}

void MainWindow::onRemoteServicesClicked()
{
    showRemoteServicesDialog(AuxNewWindow);
}

void MainWindow::onStatusLogClicked()
{
    showStatusLogDialog(AuxNewWindow);
}

void MainWindow::onLogClicked()
{
    showRpcLogDialog(AuxNewWindow);
}
