// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

/// A small round light that shows whether the node answers.
class ConnectionStatusDot : public QWidget
{
    Q_OBJECT

public:
    enum State { Unknown = 0, Checking = 1, Connected = 2, Disconnected = 3 };
    Q_ENUM(State)

    explicit ConnectionStatusDot(QWidget* parent = nullptr);

    /// Repaints only if the state changes.
    void setState(ConnectionStatusDot::State newState);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    State state = Unknown;
};
