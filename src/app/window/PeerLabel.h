// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

/// Shows the peer ID and agent of the connected node, elided in the middle where there is no room; the tool tip has all
/// of it. A left click or the space bar copies the ID.
class PeerLabel : public QLabel
{
    Q_OBJECT

public:
    explicit PeerLabel(QWidget* parent = nullptr);

    void showPeer(const QString& id, const QString& agent);
    void showNoPeer();

    /// As narrow as the layout wants it, so that a long text does not widen the window.
    QSize minimumSizeHint() const override;

signals:
    /// The ID has gone to the clipboard.
    void copied();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void copyId();

    QString nodeId {}; ///< empty while there is no node
};
