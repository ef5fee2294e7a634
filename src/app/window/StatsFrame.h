// SPDX-License-Identifier: MIT
#pragma once

#include "ConnectionStatusDot.h"
#include "CountText.h"

#include <QFrame>

class PeerLabel;
class QLabel;

/// What is below the table: the connection's dot, the peer, and the two count lines.
class StatsFrame : public QFrame
{
    Q_OBJECT

public:
    explicit StatsFrame(QWidget* parent = nullptr);

    /// `detail` is a line of the dot's tool tip; it may be empty.
    void setConnectionDotState(ConnectionStatusDot::State state, const QString& detail);
    void showPeer(const QString& nodeId, const QString& agent);
    void showNoPeer();
    void showCounts(const CountText::Lines& lines);

signals:
    /// The peer ID has gone to the clipboard.
    void peerIdCopied();

private:
    QLayout* newNodeRow();
    QLabel* newLine(const QString& name, const QString& text);

    ConnectionStatusDot* connectionDot = nullptr;
    PeerLabel* peerIdLabel = nullptr;
    QLabel* statsLine1Label = nullptr;
    QLabel* countLabel = nullptr;
};
