// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

#include <array>
#include <functional>

class QDialog;
class QWidget;

/// The tool windows of the main window: at most one of each kind, made when it is first shown and deleted when it
/// closes. None of them blocks another window.
class ToolWindows : public QObject
{
    Q_OBJECT

public:
    /// A dialog that the main window owns, or a free window.
    enum AuxWindowMode { AuxChildWindow, AuxNewWindow };
    Q_ENUM(AuxWindowMode)
    enum Id { Gc, DhtStats, Network, Swarm, Config, RemoteServices, StatusLog, RpcLog };
    Q_ENUM(Id)
    static constexpr int count = RpcLog + 1;
    /// Those that the tool bar has buttons for, in its order.
    static constexpr std::array onToolBar {Gc, DhtStats, Network, Swarm, Config, StatusLog, RpcLog};
    using Factory = std::function<QDialog*()>;

    /// `newOwner` is the parent of the windows that are children.
    explicit ToolWindows(QWidget* newOwner);
    /// Deletes the open windows, the free ones as well.
    ~ToolWindows() override;

    /// How a window is made, with the owner as its parent. One without a factory does not exist yet.
    void setFactory(Id id, const Factory& factory) { factories[static_cast<size_t>(id)] = factory; }
    /// What buttons and entries of menus call the window, with the mnemonic of an entry.
    static QString caption(Id id);
    bool canShow(Id id) const { return bool(factories.at(static_cast<size_t>(id))); }
    /// Opens the window or brings the open one to the front in `mode`; does nothing without a factory.
    void show(Id id, AuxWindowMode mode);
    /// Makes a dialog a child of the owner or a free window. It is hidden afterwards; its place and content stay.
    void configureAuxDialogWindowMode(QDialog* dialog, AuxWindowMode mode) const;
    /// Closes the windows that would otherwise stay on the screen without their owner.
    void closeFreeWindows();

signals:
    /// A window has been opened or has been closed.
    void statusMessageRequested(QString text);

private:
    struct Kind;
    static const Kind& kindOf(Id id);
    QList<QDialog*> openWindows() const;
    void onDestroyed(const Kind& kind);

    QWidget* owner;
    std::array<Factory, count> factories {};

    // null while there is no such window
    QDialog* gcDialog = nullptr;
    QDialog* dhtStatsDialog = nullptr;
    QDialog* networkDialog = nullptr;
    QDialog* swarmDialog = nullptr;
    QDialog* configDialog = nullptr;
    QDialog* remoteServicesDialog = nullptr;
    QDialog* statusLogDialog = nullptr;
    QDialog* rpcLogDialog = nullptr;
};
