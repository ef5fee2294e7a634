// SPDX-License-Identifier: MIT
#include "ToolWindows.h"

#include <QDialog>

#include <utility>

struct ToolWindows::Kind
{
    QDialog* ToolWindows::*pointer = nullptr;
    const char* caption = nullptr;
    const char* opened = nullptr; ///< status message; null for none
    const char* closed = nullptr;
};

/// In the order of Id.
const ToolWindows::Kind& ToolWindows::kindOf(Id id)
{
    static constexpr std::array kinds {
        Kind {&ToolWindows::gcDialog, QT_TR_NOOP("&Repo stats"), QT_TR_NOOP("Opened GC window"),
              QT_TR_NOOP("GC window closed")},
        Kind {&ToolWindows::dhtStatsDialog, QT_TR_NOOP("&DHT stats"), QT_TR_NOOP("Opened DHT stats window"),
              QT_TR_NOOP("DHT stats window closed")},
        Kind {&ToolWindows::networkDialog, QT_TR_NOOP("&Network"), QT_TR_NOOP("Opened network window"),
              QT_TR_NOOP("Network window closed")},
        Kind {&ToolWindows::swarmDialog, QT_TR_NOOP("&Swarm"), QT_TR_NOOP("Opened swarm window"),
              QT_TR_NOOP("Swarm window closed")},
        Kind {&ToolWindows::configDialog, QT_TR_NOOP("&Kubo config"), QT_TR_NOOP("Opened config window"),
              QT_TR_NOOP("Config window closed")},
        Kind {&ToolWindows::remoteServicesDialog, QT_TR_NOOP("Remote Ser&vices"),
              QT_TR_NOOP("Opened remote services window"), QT_TR_NOOP("Remote services window closed")},
        Kind {&ToolWindows::statusLogDialog, QT_TR_NOOP("S&tatus log")},
        Kind {&ToolWindows::rpcLogDialog, QT_TR_NOOP("R&PC log")}};
    static_assert(kinds.size() == count);
    return kinds.at(static_cast<size_t>(id));
}

ToolWindows::ToolWindows(QWidget* newOwner)
    : QObject(newOwner)
    , owner(newOwner)
{
}

ToolWindows::~ToolWindows()
{
    for (QDialog* dialog : openWindows()) {
        dialog->disconnect(this);
        delete dialog;
    }
}

QString ToolWindows::caption(Id id)
{
    return tr(kindOf(id).caption);
}

QList<QDialog*> ToolWindows::openWindows() const
{
    QList<QDialog*> dialogs;
    for (int id = 0; id < count; ++id) {
        if (QDialog* dialog = this->*kindOf(static_cast<Id>(id)).pointer)
            dialogs.append(dialog);
    }
    return dialogs;
}

void ToolWindows::show(Id id, AuxWindowMode mode)
{
    if (!canShow(id))
        return;
    const Kind& kind = kindOf(id);
    QDialog*& dialog = this->*kind.pointer;
    if (!dialog) {
        dialog = factories.at(static_cast<size_t>(id))();
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        connect(dialog, &QObject::destroyed, this, [this, &kind] { onDestroyed(kind); });
    }
    configureAuxDialogWindowMode(dialog, mode);
    if (kind.opened)
        emit statusMessageRequested(tr(kind.opened));
    dialog->setWindowState(dialog->windowState() & ~Qt::WindowMinimized);
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

void ToolWindows::onDestroyed(const Kind& kind)
{
    this->*kind.pointer = nullptr;
    if (kind.closed)
        emit statusMessageRequested(tr(kind.closed));
}

void ToolWindows::configureAuxDialogWindowMode(QDialog* dialog, AuxWindowMode mode) const
{
    if (!dialog)
        return;
    const bool wasVisible = dialog->isVisible();
    const QRect place = dialog->geometry();
    if (wasVisible)
        dialog->hide();
    const bool child = mode == AuxChildWindow;
    dialog->setParent(child ? owner : nullptr, child ? Qt::Dialog : Qt::Window);
    dialog->setWindowModality(Qt::NonModal);
    if (wasVisible)
        dialog->setGeometry(place);
}

void ToolWindows::closeFreeWindows()
{
    for (QDialog* dialog : openWindows()) {
        if (!dialog->parentWidget())
            dialog->close();
    }
}
