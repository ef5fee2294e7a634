// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QDeadlineTimer>
#include <QMenu>
#include <QPersistentModelIndex>
#include <QTimer>

#include <chrono>

class QTreeView;
class QTreeWidget;

// The steps of the program that takes the pictures. One that is not possible ends it.

[[noreturn]] void fail(const QString& problem);
void need(bool holds, const QString& problem);

/// A message handler. A warning spoils the pictures, but for what a screen without a window manager can't do.
void failOnWarning(QtMsgType type, const QMessageLogContext& context, const QString& text);

/// Runs the event loop for this time.
void wait(std::chrono::milliseconds time);

/// Waits until `condition` holds; ends the program with `problem` if it does not in time.
template <typename Condition> void awaitThat(const Condition& condition, const QString& problem)
{
    const QDeadlineTimer deadline(std::chrono::seconds(30));
    while (!condition() && !deadline.hasExpired())
        wait(std::chrono::milliseconds(5));
    need(condition(), problem);
}

/// Calls `act` with the dialog that is about to be executed, from that dialog's own event loop.
template <typename Dialog, typename Act> void inNext(const Act& act)
{
    QTimer::singleShot(0, qApp, [act] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        need(dialog, QStringLiteral("no dialog came"));
        act(*dialog);
    });
}

/// As inNext, with a dialog that comes later.
template <typename Dialog, typename Act> void inComing(const Act& act)
{
    auto* timer = new QTimer(qApp);
    timer->callOnTimeout([timer, act] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        timer->stop();
        timer->deleteLater();
        act(*dialog);
    });
    timer->start(std::chrono::milliseconds(5));
}

/// As inNext, with the context menu that is about to come; it is closed afterwards.
template <typename Act> void inNextMenu(const Act& act)
{
    QTimer::singleShot(0, qApp, [act] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        need(menu, QStringLiteral("no context menu came"));
        act(*menu);
    });
}

/// The row called `name` below `parent`, as soon as there is one.
QPersistentModelIndex rowThatComes(const QTreeView& tree, const QModelIndex& parent, const QString& name);

/// Shows the paths in the first column as if `home` were somebody's usual home folder.
void showPathsOfAda(const QTreeWidget& paths, const QString& home);
