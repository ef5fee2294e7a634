// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QMenu>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <functional>

/// Answers the next modal dialog of type `Dialog`. Looks for it while the dialog's own event loop runs; a dialog of
/// another type is left alone.
template <typename Dialog> class ModalAnswer
{
public:
    explicit ModalAnswer(std::function<void(Dialog&)> newAnswer)
        : answer(std::move(newAnswer))
    {
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] { look(); });
        timer.start(std::chrono::milliseconds(5));
    }
    bool wasGiven() const { return given; }

private:
    void look()
    {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible())
            return;
        timer.stop();
        given = true;
        answer(*dialog);
    }

    std::function<void(Dialog&)> answer;
    QTimer timer;
    bool given = false;
};

/// Answers the next context menu: keeps what it offers, and triggers the entry `wish` if that can be chosen.
class MenuAnswer
{
public:
    explicit MenuAnswer(const QString& newWish = {})
        : wish(newWish)
    {
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] { look(); });
        timer.start(std::chrono::milliseconds(5));
    }
    /// The entries in order, separators as "-", those that can't be chosen in parentheses; empty if no menu came.
    QStringList entries;

private:
    void look()
    {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            return;
        timer.stop();
        QAction* wished = nullptr;
        for (QAction* action : menu->actions()) {
            const QString text = action->isSeparator() ? QStringLiteral("-") : action->text();
            entries.append(action->isEnabled() ? text : QLatin1Char('(') + text + QLatin1Char(')'));
            if (!wish.isEmpty() && text == wish)
                wished = action;
        }
        menu->close();
        if (wished)
            wished->trigger();
    }

    QString wish;
    QTimer timer;
};
