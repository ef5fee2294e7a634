// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

/// Drags files onto a widget and drops them; the source offers to move them and to copy them. Returns whether a copy
/// was accepted.
inline bool dropFiles(QWidget* target, const QList<QUrl>& urls)
{
    QMimeData data;
    data.setUrls(urls);
    data.setText(QStringLiteral("text"));
    const auto actions = Qt::MoveAction | Qt::CopyAction;
    QDragEnterEvent enter({5, 5}, actions, &data, Qt::LeftButton, {});
    QApplication::sendEvent(target, &enter);
    QDropEvent drop({5, 5}, actions, &data, Qt::LeftButton, {});
    drop.setDropAction(Qt::MoveAction);
    if (enter.isAccepted())
        QApplication::sendEvent(target, &drop);
    return enter.isAccepted() && drop.isAccepted() && drop.dropAction() == Qt::CopyAction;
}
