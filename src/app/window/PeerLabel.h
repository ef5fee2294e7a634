#pragma once

#include <QLabel>

/// Shows the peer ID and agent of the connected node. A left click or the space bar copies the ID.
class PeerLabel : public QLabel
{
    Q_OBJECT

public:
    explicit PeerLabel(QWidget* parent = nullptr);

    void showPeer(const QString& id, const QString& agent);
    void showNoPeer();

signals:
    /// The ID has gone to the clipboard.
    void copied();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void copyId();

    QString nodeId {}; ///< empty while there is no node
};
